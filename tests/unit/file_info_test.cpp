/** The files of a VSAN: the query, which code page it takes, the records that come back. */
#include <doctest/doctest.h>

#include "unit/file_world.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kRequester = 0x01020304;
constexpr std::uint32_t kOperation = 0x55667788;
constexpr std::size_t kMessageTypeAt = 8, kVsanAt = 8 + 120, kNameAt = 8 + 124;

std::uint32_t send(ScriptedPlatform& platform, std::uint32_t msgtype, const std::uint8_t* name) {
  mts_msg_ref_t msg{};
  const auto status = ficon_cmi_file_info_nonblock(kRequester, platform.handle(), "VSH", "UNKNOWN",
                                                   5, kOperation, msgtype, kFileVsan, name, &msg);
  if (status == 0) mts_drop(platform.handle(), &msg);
  return status;
}

/** A parsed reply; the list is released at the end. */
struct Parsed {
  ScriptedPlatform platform;
  ficon_cmi_file_info_t* list = reinterpret_cast<ficon_cmi_file_info_t*>(this);
  bool list_set = true;  // null or not
  std::uint32_t count = 0x99;
  std::uint32_t status = 0;

  explicit Parsed(const Bytes& reply, std::uint32_t convert = 1, Conversion converter = ebcdic) {
    play_converter(platform, std::move(converter));
    status = ficon_cmi_parse_file_info(1, platform.received(reply), &list, convert, 37, &count);
    if (static_cast<void*>(list) != this) return;
    list_set = false;
    list = nullptr;
  }
  ~Parsed() { mtrack_free(list); }
};

/** A file with its name and description in EBCDIC blanks but for a first letter A. */
Record file(std::uint8_t mark) {
  return record(196).u8(0, mark).fill(33, 8, 0x40).u8(33, 0xc1).fill(91, 24, 0x40);
}

Record head(std::uint32_t status = 0) {
  return record(158).host32(141, status);
}

std::uint32_t ask(ScriptedPlatform& platform, std::uint32_t msgtype, std::uint32_t vsan, char* name,
                  ficon_cmi_file_info_t** list, std::uint32_t* count) {
  return ficon_cmi_file_info(kRequester, platform.handle(), "VSH", "UNKNOWN", 5, kOperation,
                             msgtype, vsan, name, list, count);
}

}  // namespace

TEST_CASE("file info: the record, its operation in host order") {
  for (const std::uint32_t msgtype : {1U, 2U, 0x11223344U}) {
    ScriptedPlatform platform;
    platform.expect_send(7857, golden("file_info.hex").with(kMessageTypeAt, be32(msgtype)));
    const Bytes name = {0xd5, 0xc1, 0xd4, 0xc5, 0x6d, 0xf1, 0x60, 0xc2, 0xff};
    CHECK(send(platform, msgtype, name.data()) == 0);
    CHECK(platform.lines({"tlv_aligned_array_add_tlv"}) ==
          "tlv_aligned_array_add_tlv capacity=2048 type=6 length=158\n");
    CHECK(platform.finished());
  }
}

TEST_CASE("file info: no name, an empty one, a short one") {
  ScriptedPlatform platform;
  const Golden unnamed = golden("file_info.hex").with(kNameAt, zeros(8));
  platform.expect_send(7857, unnamed);
  platform.expect_send(7857, unnamed);
  platform.expect_send(7857, unnamed.with(kNameAt, {0xc1, 0xc2}));
  const std::uint8_t empty[9] = {}, brief[9] = {0xc1, 0xc2, 0, 0xc3};
  CHECK(send(platform, 2, nullptr) == 0);
  CHECK(send(platform, 2, empty) == 0);
  CHECK(send(platform, 2, brief) == 0);
  CHECK(platform.finished());
}

TEST_CASE("file info reply: name and description in ASCII, the rest untouched") {
  const Bytes answer = golden("file_info_answer.hex").bytes();
  Parsed reply(answer);
  CHECK(reply.status == 0);
  REQUIRE(reply.count == 1);
  const Bytes expected = record(196)
                             .put(0, Bytes(answer.begin() + 170, answer.end()))
                             .text(33, "NAME_1-B")
                             .u8(41, 0)
                             .text(91, "Tape pool               ");
  CHECK(difference(expected, bytes_of(*reply.list)) == "");
  CHECK(reply.platform.lines({"mtrack_alloc"}) == "mtrack_alloc module=205 type=0 size=196\n");
  CHECK(reply.platform.lines({"convert_codepage"}) == "convert_codepage 37 1 * 24\n");
  CHECK(reply.platform.printed().empty());
}

TEST_CASE("file info reply: without conversion the records are copies") {
  const Bytes answer = golden("file_info_answer.hex").bytes();
  Parsed reply(answer, 0);
  CHECK(reply.status == 0);
  CHECK(difference(Bytes(answer.begin() + 170, answer.end()), bytes_of(*reply.list)) == "");
  CHECK(reply.platform.count("convert") == 0);
}

TEST_CASE("file info reply: files back to back, in order, wherever the head stands") {
  Tlvs array = tlvs();
  array.add(11, file(0)).add(99, zeros(5)).add(6, head());
  for (std::uint8_t i = 1; i < 100; ++i) array.add(11, file(i));
  Parsed reply(array);
  CHECK(reply.status == 0);
  REQUIRE(reply.count == 100);
  for (std::uint8_t i = 0; i < 100; ++i) {
    CHECK(bytes_of(reply.list[i])[0] == i);
    CHECK(std::string(reply.list[i].file_name) == "A       ");
  }
  CHECK(reply.platform.lines({"mtrack_alloc"}) == "mtrack_alloc module=205 type=0 size=19600\n");
}

TEST_CASE("file info reply: no files is success with a null list") {
  Parsed reply(tlvs().add(6, head()));
  CHECK(reply.status == 0);
  CHECK(reply.count == 0);
  CHECK(reply.list_set);
  CHECK(reply.list == nullptr);
  CHECK(reply.platform.count("mtrack_alloc") == 0);
}

TEST_CASE("file info reply: nothing is copied where no list is wanted, nothing told to no one") {
  for (const bool listed : {true, false}) {
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    ficon_cmi_file_info_t* list = nullptr;
    std::uint32_t count = 0x99;
    mts_msg_ref_t* reply = platform.received(golden("file_info_answer.hex").bytes());
    CHECK(ficon_cmi_parse_file_info(1, reply, listed ? &list : nullptr, 1, 37,
                                    listed ? nullptr : &count) == 0);
    CHECK(count == (listed ? 0x99 : 1));
    CHECK(platform.count("mtrack_alloc") == (listed ? 1 : 0));
    mtrack_free(list);
    CHECK(platform.finished());
  }
}

TEST_CASE("file info reply: what cannot be converted is let pass") {
  Parsed reply(tlvs().add(6, head()).add(11, file(7)), 1, [](auto&&...) { return std::nullopt; });
  CHECK(reply.status == 0);
  REQUIRE(reply.count == 1);
  CHECK(std::string(reply.list->file_name, 9) == std::string(9, '\0'));
  CHECK(bytes_of(reply.list->description) == Bytes(24, 0x40));
}

TEST_CASE("file info reply: refused, without a head, of another size, or lying") {
  struct Case {
    Bytes reply;
    std::uint32_t status;
    std::string printed;
  };
  const std::string unrecognised = "Unrecognised response for the request\n";
  const std::string size = "Invalid size ficon_cmi_port_info_t payload\n";
  for (const Case& c :
       {Case{tlvs(), 0x40850003, "invalid cmi payload: no tlvs present\n"},
        Case{tlvs().add(11, file(1)), 0x40850003, unrecognised},
        Case{tlvs().add(6, head(0x40890066)).add(11, file(1)), 0x40890066, ""},
        Case{tlvs().add(6, head()).add(11, file(1)).add(6, head(7)), 7, ""},
        Case{tlvs().add(6, head()).add(11, file(1)).add(11, zeros(195)), 0x40850003, size},
        Case{tlvs().add(6, head()).add(11, zeros(197)), 0x40850003, size},
        Case{tlvs().add(6, head()).add(11, {}), 0x40850003, size},
        Case{tlvs().add(6, head()).add_claiming(11, 500, file(1)), 0x40aa0100, ""}}) {
    Parsed reply(c.reply);
    CHECK(reply.status == c.status);
    CHECK(reply.platform.printed() == c.printed);
    CHECK(reply.list == nullptr);
    CHECK(reply.platform.leaks().empty());
  }
}

TEST_CASE("file info reply: no payload, no memory, a walk that fails in the second pass") {
  ScriptedPlatform platform;
  play_converter(platform, ebcdic);
  ficon_cmi_file_info_t* list = nullptr;
  const auto parse = [&](mts_msg_ref_t* reply) {
    return ficon_cmi_parse_file_info(1, reply, &list, 1, 37, nullptr);
  };
  CHECK(parse(platform.received_without_payload()) == 0x40850003);
  CHECK(platform.printed() == "invalid cmi payload: no tlvs present\n");
  platform.fail_allocation(1);
  CHECK(parse(platform.received(golden("file_info_answer.hex").bytes())) == 1);
  CHECK(
      without_lines(platform.printed())
          .ends_with("Warning! Malloc Failure in feature/ficon/cmi/tevrak.cpp[N] for size 196\n"));
  platform.fail_call(7);  // payload, count, two TLVs, the array, one TLV and this one
  CHECK(parse(platform.received(golden("file_info_answer.hex").bytes())) == kInjected);
  CHECK(list == nullptr);
  CHECK(platform.finished());
}

TEST_CASE("file info, blocking: code page, query, drop; neither check nor lock") {
  ScriptedPlatform platform;
  play_converter(platform, ebcdic);
  expect_codepage(platform);
  platform.expect_send(7857, golden("file_info.hex")).reply(golden("file_info_answer.hex").bytes());
  ficon_cmi_file_info_t* list = nullptr;
  std::uint32_t count = 0;
  Name name("name_1-b");
  CHECK(ask(platform, 2, kFileVsan, name, &list, &count) == 0);
  CHECK(count == 1);
  CHECK(std::string(list->file_name) == "NAME_1-B");
  mtrack_free(list);
  CHECK(platform.order().starts_with(kCodepageExchange + ", ficon_get_convert_fn_ptr, convert, " +
                                     "send 7857, token, drop request, recv, mtrack_alloc"));
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("file info, blocking: the first VSAN's code page for a get next that names nothing") {
  struct Case {
    std::uint32_t msgtype, vsan;
    const char* name;
    bool first;
  };
  for (const Case& c : {Case{2, 0, "", true}, Case{2, 0, nullptr, true}, Case{2, 0, "A", false},
                        Case{1, 0, "", false}, Case{2, 7, "", false}, Case{1, 7, nullptr, false}}) {
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    expect_codepage(platform);
    Bytes field = c.name != nullptr && c.name[0] == 'A' ? Bytes(8, 0x40) : zeros(8);
    if (field[0] != 0) field[0] = 0xc1;
    platform
        .expect_send(7857, golden("file_info.hex")
                               .with(kMessageTypeAt, be32(c.msgtype))
                               .with(kVsanAt, be32(c.vsan))
                               .with(kNameAt, field))
        .reply(tlvs().add(6, head()));
    Name name(c.name == nullptr ? "" : c.name);
    CHECK(ask(platform, c.msgtype, c.vsan, c.name == nullptr ? nullptr : name.text, nullptr,
              nullptr) == 0);
    CHECK(read_be32(platform.sent(7855).at(0), 8) == (c.first ? 2 : 1));
    CHECK(read_be32(platform.sent(7855).at(0), 8 + 120) == (c.first ? 0 : c.vsan));
    CHECK(platform.finished());
  }
}

TEST_CASE("file info, blocking: no code page, a refused name, a time-out") {
  ScriptedPlatform platform;
  play_converter(platform, ebcdic);
  ficon_cmi_file_info_t* list = nullptr;
  std::uint32_t count = 0x99;
  expect_codepage(platform, 0);
  CHECK(ask(platform, 1, 7, nullptr, &list, &count) == 0x40850004);
  expect_codepage(platform);
  Name blank(" A"), lengthy("NINECHARS");
  CHECK(ask(platform, 1, 7, blank, &list, &count) == 0x4085001d);
  expect_codepage(platform);
  CHECK(ask(platform, 1, 7, lengthy, &list, &count) == 0x4085001f);
  expect_codepage(platform);
  platform.expect_send(7857).recv_errors({62});
  CHECK(ask(platform, 1, 7, nullptr, &list, &count) == 0x40850043);
  CHECK(platform.printed().empty());
  CHECK(count == 0x99);
  CHECK(platform.finished());
}

TEST_CASE("file info, blocking: a failed send is told") {
  ScriptedPlatform platform;
  expect_codepage(platform);
  platform.expect_send(7857).fails(32);
  CHECK(ask(platform, 1, 7, nullptr, nullptr, nullptr) == 0xffffffff);
  CHECK(without_lines(platform.printed()) ==
        "ficon_cmi_file_info(N):ficon_cmi_file_info_nonblock failed:-1\n");
  CHECK(platform.finished());
}
