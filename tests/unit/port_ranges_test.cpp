/** The same setting for consecutive port addresses, and the parser of what comes back. */
#include <doctest/doctest.h>

#include "unit/file_world.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kFailed = 0xffffffff;

std::uint32_t block_range(ScriptedPlatform& p, std::uint16_t first, const Bytes& blocked,
                          mts_msg_ref_t* msg) {
  return ficon_cmi_set_port_blocked_portaddr_range(
      1, p.handle(), "VSH", "UNKNOWN", 5, kFileVsan, nullptr, nullptr, first, blocked.data(),
      static_cast<std::uint32_t>(blocked.size()), 1, 37, msg);
}

std::uint32_t name_range(ScriptedPlatform& p, std::uint16_t first, const Bytes& names,
                         mts_msg_ref_t* msg) {
  return ficon_cmi_set_port_name_portaddr_range(
      1, p.handle(), "VSH", "UNKNOWN", 5, kFileVsan, nullptr, nullptr, first,
      reinterpret_cast<const char*>(names.data()), static_cast<std::uint32_t>(names.size() / 25), 1,
      msg);
}

std::uint32_t prohibit_range(ScriptedPlatform& p, std::uint16_t first, const Bytes& bitsets,
                             mts_msg_ref_t* msg) {
  return ficon_cmi_set_prohibit_bitset_range(
      1, p.handle(), "VSH", "UNKNOWN", 5, kFileVsan, nullptr, nullptr, first, 0x55667788,
      bitsets.data(), static_cast<std::uint32_t>(bitsets.size() / 32), 1, 37, msg);
}

/** What stands behind the file request record. */
Bytes entries_sent(const ScriptedPlatform& platform) {
  const Bytes sent = platform.sent(7866).at(0);
  return Bytes(sent.begin() + 166, sent.end());
}

std::string memory(const ScriptedPlatform& platform) {
  return platform.lines({"mtrack_alloc", "mtrack_free", "free"});
}

/** Tracked, and released with plain free. */
std::string block(int type, int size) {
  const std::string line =
      "mtrack_alloc module=205 type=" + std::to_string(type) + " size=" + std::to_string(size);
  return line + "\nfree block=" + line + "\n";
}

std::uint32_t parse(const Bytes& reply) {
  ScriptedPlatform platform;
  const auto status = ficon_cmi_file_parse_set_port_cfg(platform.received(reply));
  CHECK(platform.printed().empty());
  return status;
}

}  // namespace

TEST_CASE("range, blocked: consecutive port addresses, a byte each") {
  ScriptedPlatform platform;
  platform.expect_send(7866);
  mts_msg_ref_t msg{};
  CHECK(block_range(platform, 0x1a, {0x81, 0, 1}, &msg) == 0);
  CHECK(difference(Bytes{0, 22, 0, 3} + host16(0x1a) + Bytes{0x81} + Bytes{0, 22, 0, 3} +
                       host16(0x1b) + Bytes{0} + Bytes{0, 22, 0, 3} + host16(0x1c) + Bytes{1},
                   entries_sent(platform)) == "");
  CHECK(memory(platform) == block(7, 9));
  mts_drop(platform.handle(), &msg);
  CHECK(platform.finished());
}

TEST_CASE("range, names: 25 bytes apart, in the code page that fcd names") {
  ScriptedPlatform platform;
  play_converter(platform, ebcdic);
  expect_codepage(platform);
  platform.expect_send(7866);
  mts_msg_ref_t msg{};
  Bytes names = record(50).text(0, "A1").text(25, "ABCDEFGHIJKLMNOPQRSTUVWX");
  CHECK(name_range(platform, 0xfc, names, &msg) == 0);
  Bytes first = {0xc1, 0xf1};
  first.resize(24, 0x40);
  const Bytes second = {0xc1, 0xc2, 0xc3, 0xc4, 0xc5, 0xc6, 0xc7, 0xc8, 0xc9, 0xd1, 0xd2, 0xd3,
                        0xd4, 0xd5, 0xd6, 0xd7, 0xd8, 0xd9, 0xe2, 0xe3, 0xe4, 0xe5, 0xe6, 0xe7};
  CHECK(difference(Bytes{0, 7, 0, 29} + host32(0xfc) + first + Bytes{0} + Bytes{0, 7, 0, 29} +
                       host32(0xfd) + second + Bytes{0},
                   entries_sent(platform)) == "");
  CHECK(platform.lines({"convert"}) ==
        "convert from=1 to=16842807 length=2\nconvert from=1 to=16842807 length=24\n");
  CHECK(memory(platform) == block(6, 58));
  mts_drop(platform.handle(), &msg);
  CHECK(platform.finished());
}

TEST_CASE("range, names: without a code page nothing is sent, and the entries are freed") {
  ScriptedPlatform platform;
  expect_codepage(platform, 0);
  mts_msg_ref_t msg{};
  CHECK(name_range(platform, 1, zeros(25), &msg) == 0x40850004);
  CHECK(memory(platform) == block(6, 29));
  CHECK(platform.finished());
}

TEST_CASE("range, prohibit: bitsets 32 bytes apart, the common value with each") {
  ScriptedPlatform platform;
  platform.expect_send(7866);
  mts_msg_ref_t msg{};
  Bytes bitsets;
  for (int i = 0; i < 64; ++i) bitsets.push_back(static_cast<std::uint8_t>(i + 1));
  CHECK(prohibit_range(platform, 0xfffe, bitsets, &msg) == 0);
  CHECK(difference(Bytes{0, 23, 0, 40} + host32(0xfffe) + host32(0x55667788) +
                       Bytes(&bitsets[0], &bitsets[0] + 32) + Bytes{0, 23, 0, 40} + host32(0xffff) +
                       host32(0x55667788) + Bytes(&bitsets[32], &bitsets[32] + 32),
                   entries_sent(platform)) == "");
  CHECK(memory(platform) == "mtrack_alloc module=205 type=9 size=80\n" + block(8, 1262) +
                                "free block=mtrack_alloc module=205 type=9 size=80\n");
  mts_drop(platform.handle(), &msg);
  CHECK(platform.finished());
}

TEST_CASE("ranges: 254 prohibit entries go, 255 are the array's error") {
  for (const std::uint32_t count : {254U, 255U}) {
    ScriptedPlatform platform;
    if (count == 254) platform.expect_send(7866);
    mts_msg_ref_t msg{};
    CHECK(prohibit_range(platform, 0, zeros(count * 32), &msg) == (count == 254 ? 0 : 0x40aa0101));
    if (count == 254) mts_drop(platform.handle(), &msg);
    CHECK(platform.finished());
  }
}

TEST_CASE("ranges: without entries the record goes alone") {
  ScriptedPlatform platform;
  expect_codepage(platform);
  for (int i = 0; i < 3; ++i) platform.expect_send(7866);
  mts_msg_ref_t msg[3] = {};
  CHECK(name_range(platform, 0, {}, &msg[0]) == 0);
  CHECK(block_range(platform, 0, {}, &msg[1]) == 0);
  CHECK(prohibit_range(platform, 0, {}, &msg[2]) == 0);
  for (const Bytes& sent : platform.sent(7866)) CHECK(sent.size() == 166);
  for (auto& m : msg) mts_drop(platform.handle(), &m);
  CHECK(platform.finished());
}

TEST_CASE("ranges: without memory a warning and -1; the prohibit sender's own failure is 1") {
  const std::string warning =
      "Warning! Malloc Failure in feature/ficon/cmi/tevrak.cpp[N] for size ";
  const auto run = [&](int failing, auto range, const Bytes& values, std::uint32_t status,
                       const std::string& size) {
    ScriptedPlatform platform;
    platform.fail_allocation(failing);
    mts_msg_ref_t msg{};
    CHECK(range(platform, 1, values, &msg) == status);
    CHECK(without_lines(platform.printed()) == warning + size + "\n");
    CHECK(platform.finished());
  };
  run(1, block_range, {1, 2, 3}, kFailed, "9");
  run(1, name_range, zeros(50), kFailed, "58");
  run(1, prohibit_range, zeros(64), kFailed, "80");
  run(2, prohibit_range, zeros(64), 1, "1262");
}

TEST_CASE("ranges: a failed send is the result") {
  ScriptedPlatform platform;
  expect_codepage(platform);
  for (int i = 0; i < 3; ++i) platform.expect_send(7866).fails(32);
  mts_msg_ref_t msg{};
  CHECK(name_range(platform, 1, {}, &msg) == kFailed);
  CHECK(block_range(platform, 1, {1}, &msg) == kFailed);
  CHECK(prohibit_range(platform, 1, zeros(32), &msg) == kFailed);
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("setting reply: the first record's status, in host order, wherever it stands") {
  CHECK(parse(file_answer(0)) == 0);
  CHECK(parse(golden("file_answer.hex").bytes()) == 0x71727374);
  CHECK(parse(tlvs().add(22, zeros(3)).add(6, record(158).host32(141, 7))) == 7);
  CHECK(parse(tlvs().add(6, record(158)).add(6, record(158).host32(141, 7))) == 0);
  CHECK(parse(tlvs().add(6, record(158).host32(141, 5)).add_claiming(2, 5000, {1})) == 5);
}

TEST_CASE("setting reply: no record is 3, a short record says 0, a walk's error is the result") {
  CHECK(parse(tlvs().add(12, Bytes(128, 0xff))) == 3);
  CHECK(parse(tlvs().add(6, Bytes(141, 0xff))) == 0);
  CHECK(parse(tlvs().add(6, {})) == 0);
  CHECK(parse(tlvs().add_claiming(6, 159, zeros(158))) == 0x40aa0100);
}

TEST_CASE("setting reply: no TLVs or no payload is told on the console") {
  for (const bool empty : {true, false}) {
    ScriptedPlatform platform;
    mts_msg_ref_t* reply = empty ? platform.received(tlvs()) : platform.received_without_payload();
    CHECK(ficon_cmi_file_parse_set_port_cfg(reply) == 0x40850003);
    CHECK(platform.printed() == "invalid cmi payload: no tlvs present\n");
  }
}
