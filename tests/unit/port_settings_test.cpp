/** Ports blocked, named and prohibited: the senders, their ranges, and the parser. */
#include <doctest/doctest.h>

#include <vector>

#include "unit/file_world.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kRequester = 0x01020304;
constexpr std::uint32_t kKey = 0xa1b2c3d4;
constexpr std::size_t kNameAt = 8 + 124, kKeyAt = 8 + 133;
constexpr std::uint32_t kNoRoom = 0x40aa0101;  // the double's own answer to a full array

const char* const kLongName = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";

ficon_cmi_port_name_entry_t named(std::uint32_t port_address, std::string_view name) {
  ficon_cmi_port_name_entry_t entry{};
  entry.port_address = port_address;
  std::memcpy(entry.port_name, name.data(), std::min(name.size(), sizeof entry.port_name));
  return entry;
}

ficon_cmi_prohibit_entry_t prohibited(std::uint32_t port_address, std::uint32_t common, int first,
                                      int step) {
  ficon_cmi_prohibit_entry_t entry{};
  entry.port_address = port_address;
  entry.common_value = common;
  for (auto& byte : entry.bitset) {
    byte = static_cast<std::uint8_t>(first);
    first += step;
  }
  return entry;
}

const std::vector<ficon_cmi_port_blocked_entry_t> kBlocked = {{0x1a2b, 0x81}, {0xfd, 0}};
const std::vector<ficon_cmi_port_name_entry_t> kNames = {named(0x1a2b3c4d, "Tape 1"),
                                                         named(0xfd, kLongName)};
const std::vector<ficon_cmi_prohibit_entry_t> kProhibits = {
    prohibited(0x1a2b3c4d, 0x55667788, 1, 1), prohibited(0xfd, 0x99aabbcc, 0xff, -1)};

/** One of the three senders with its entries: `count` of them. */
struct Sender {
  std::string golden_name;
  std::string add;  // how its entries are added
  std::uint32_t (*run)(ScriptedPlatform&, char* name, const std::uint32_t* key, std::uint32_t count,
                       std::uint32_t convert, mts_msg_ref_t*);
};

template <class Entry>
std::vector<Entry> entries(const std::vector<Entry>& some, std::uint32_t count) {
  std::vector<Entry> all(some);
  all.resize(std::max<std::size_t>(count, some.size()));
  return all;
}

const Sender kSenders[] = {
    {"port_blocked.hex", "tlv_aligned_array_add_tlv capacity=8096 type=22 length=3\n",
     [](ScriptedPlatform& p, char* name, const std::uint32_t* key, std::uint32_t count,
        std::uint32_t convert, mts_msg_ref_t* msg) {
       return ficon_cmi_file_set_port_blocked_portaddr_nonblock(
           kRequester, p.handle(), "VSH", "UNKNOWN", 5, kFileVsan, name, key,
           entries(kBlocked, count).data(), count, convert, 37, msg);
     }},
    {"port_name.hex", "tlv_aligned_array_add_tlv capacity=10240 type=7 length=29\n",
     [](ScriptedPlatform& p, char* name, const std::uint32_t* key, std::uint32_t count,
        std::uint32_t convert, mts_msg_ref_t* msg) {
       return ficon_cmi_file_set_port_name_portaddr_nonblock(
           kRequester, p.handle(), "VSH", "UNKNOWN", 5, kFileVsan, name, key,
           entries(kNames, count).data(), count, convert, 37, msg);
     }},
    {"port_prohibit.hex", "tlv_aligned_array_add_tlv capacity=1262 type=23 length=40\n",
     [](ScriptedPlatform& p, char* name, const std::uint32_t* key, std::uint32_t count,
        std::uint32_t convert, mts_msg_ref_t* msg) {
       return ficon_cmi_file_set_prohibit_bitset_nonblock(
           kRequester, p.handle(), "VSH", "UNKNOWN", 5, kFileVsan, name, key,
           entries(kProhibits, count).data(), count, convert, 37, msg);
     }},
};
const Sender& kBlockedSender = kSenders[0];
const Sender& kNameSender = kSenders[1];
const Sender& kProhibitSender = kSenders[2];

/** Sends `count` entries with names converted; what was sent has to be dropped. */
std::uint32_t send(ScriptedPlatform& platform, const Sender& sender, char* name,
                   const std::uint32_t* key, std::uint32_t count, std::uint32_t convert = 1) {
  mts_msg_ref_t msg{};
  const auto status = sender.run(platform, name, key, count, convert, &msg);
  if (status == 0) mts_drop(platform.handle(), &msg);
  return status;
}

}  // namespace

TEST_CASE("port settings: record and entries, port addresses in host order") {
  for (const Sender& sender : kSenders) {
    CAPTURE(sender.golden_name);
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    platform.expect_send(7866, golden(sender.golden_name));
    Name name("name_1-b");
    CHECK(send(platform, sender, name, &kKey, 2) == 0);
    CHECK(std::string(name.text) == "NAME_1-B");
    CHECK(platform.lines({"tlv_aligned_array_add_tlv"}).find(sender.add + sender.add) !=
          std::string::npos);
    CHECK(platform.lines({"ficon_init_cmi_hdr"}) ==
          "ficon_init_cmi_hdr 3 \"VSH\" \"UNKNOWN\" 46\n");
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
}

TEST_CASE("port settings: without entries the record goes alone") {
  for (const Sender& sender : kSenders) {
    CAPTURE(sender.golden_name);
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    Bytes alone = golden(sender.golden_name).bytes();
    alone.resize(166);
    platform.expect_send(7866, Golden(alone).with(0, be32(166), "size"));
    Name name("name_1-b");
    CHECK(send(platform, sender, name, &kKey, 0) == 0);
    CHECK(platform.finished());
  }
}

TEST_CASE("port settings: no name and no key leave zeros") {
  for (const Sender& sender : kSenders) {
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    platform.expect_send(7866,
                         golden(sender.golden_name).with(kNameAt, zeros(8)).with(kKeyAt, zeros(4)));
    CHECK(send(platform, sender, nullptr, nullptr, 2) == 0);
    CHECK(platform.finished());
  }
}

TEST_CASE("port settings: raw file names are eight bytes as they are") {
  for (const Sender* sender : {&kBlockedSender, &kProhibitSender}) {
    ScriptedPlatform platform;
    platform.expect_send(7866,
                         golden(sender->golden_name).with(kNameAt, {'a', 0, 'b', 1, 2, 3, 4, 5}));
    char name[8] = {'a', 0, 'b', 1, 2, 3, 4, 5};
    CHECK(send(platform, *sender, name, &kKey, 2, 0) == 0);
    CHECK(platform.finished());
  }
}

TEST_CASE("port settings: a refused name or a failed send is the result, and nothing leaks") {
  for (const Sender& sender : kSenders) {
    CAPTURE(sender.golden_name);
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    Name blank(" A"), good("A");
    CHECK(send(platform, sender, blank, &kKey, 2) == 0x4085001d);
    CHECK(platform.sent(7866).empty());
    platform.expect_send(7866).fails(32);
    CHECK(send(platform, sender, good, &kKey, 2) == 0xffffffff);
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
}

TEST_CASE("port settings: as many entries as the array holds, and one more") {
  struct Case {
    const Sender& sender;
    std::uint32_t most;
  };
  for (const Case& c :
       {Case{kBlockedSender, 1132}, Case{kNameSender, 305}, Case{kProhibitSender, 254}}) {
    CAPTURE(c.sender.golden_name);
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    platform.expect_send(7866);
    CHECK(send(platform, c.sender, nullptr, nullptr, c.most) == 0);
    CHECK(platform.count("tlv_aligned_array_add_tlv") == c.most + 1);
    CHECK(send(platform, c.sender, nullptr, nullptr, c.most + 1) == kNoRoom);
    CHECK(platform.sent(7866).size() == 1);
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
}

TEST_CASE("prohibit: the buffer grows with the count, is tracked, and goes back with free") {
  for (const std::uint32_t count : {0U, 1U, 10U, 254U}) {
    CAPTURE(count);
    ScriptedPlatform platform;
    platform.expect_send(7866);
    CHECK(send(platform, kProhibitSender, nullptr, nullptr, count) == 0);
    const std::string size = std::to_string(count * 40 + 1182);
    const std::string block = "mtrack_alloc module=205 type=8 size=" + size;
    CHECK(platform.lines({"mtrack_alloc", "mtrack_free", "free"}) ==
          block + "\nfree block=" + block + "\n");
    const std::string add = "tlv_aligned_array_add_tlv capacity=" + size;
    CHECK(platform.calls({"tlv_aligned_array_add_tlv"}).at(0) == add + " type=6 length=158");
    CHECK(platform.sent(7866).at(0).size() == 166 + count * 44);
    CHECK(platform.finished());
  }
}

TEST_CASE("prohibit: without memory there is a warning and the plain 1") {
  ScriptedPlatform platform;
  platform.fail_allocation(1);
  CHECK(send(platform, kProhibitSender, nullptr, nullptr, 2) == 1);
  CHECK(without_lines(platform.printed()) ==
        "Warning! Malloc Failure in feature/ficon/cmi/tevrak.cpp[N] for size 1262\n");
  CHECK(platform.finished());
}

TEST_CASE("prohibit: a count whose size cannot be told is one without memory") {
  for (const std::uint32_t count : {0x06666666U, 0xffffffffU}) {
    ScriptedPlatform platform;
    platform.fail_allocation(1);
    mts_msg_ref_t msg{};
    const ficon_cmi_prohibit_entry_t one{};
    CHECK(ficon_cmi_file_set_prohibit_bitset_nonblock(1, platform.handle(), "A", "B", 5, 1, nullptr,
                                                      nullptr, &one, count, 1, 37, &msg) == 1);
    CHECK(platform.finished());
  }
}

TEST_CASE("port names of every length, converted into the request and not in the caller's entry") {
  for (std::size_t length = 0; length <= 24; ++length) {
    CAPTURE(length);
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    platform.expect_send(7866);
    const auto entry = named(1, std::string_view(kLongName, length));
    mts_msg_ref_t msg{};
    CHECK(ficon_cmi_file_set_port_name_portaddr_nonblock(
              1, platform.handle(), "A", "B", 5, 1, nullptr, nullptr, &entry, 1, 1, 37, &msg) == 0);
    Bytes field = golden("port_name.hex").bytes();
    field = Bytes(&field[207], &field[207] + length);
    field.resize(24, 0x40);
    const Bytes sent = platform.sent(7866).at(0);
    CHECK(difference(field + zeros(1), Bytes(&sent[174], &sent[174] + 25)) == "");
    CHECK(bytes_of(entry) == bytes_of(named(1, std::string_view(kLongName, length))));
    mts_drop(platform.handle(), &msg);
  }
}

TEST_CASE(
    "port names: raw ones are 25 bytes as they are; one that cannot be converted is refused") {
  ScriptedPlatform platform;
  platform.expect_send(7866);
  const auto entry = named(1, std::string_view("\x01\x00\x02pqrstuvwxyzPQRSTUVWXYZ\xff", 25));
  mts_msg_ref_t msg{};
  const auto run = [&](std::uint32_t convert) {
    return ficon_cmi_file_set_port_name_portaddr_nonblock(
        1, platform.handle(), "A", "B", 5, 1, nullptr, nullptr, &entry, 1, convert, 37, &msg);
  };
  CHECK(run(2) == 0);
  const Bytes sent = platform.sent(7866).at(0);
  CHECK(difference(bytes_of(entry.port_name), Bytes(&sent[174], &sent[174] + 25)) == "");
  mts_drop(platform.handle(), &msg);
  play_converter(platform, ebcdic);
  CHECK(run(1) == 0x40850020);
  CHECK(platform.finished());
}
