/** The director history: its request, the two TLVs of its reply, entries in host order. */
#include <doctest/doctest.h>

#include "double/scripted_platform.h"

using namespace ficon::test;

namespace {

Record command(std::uint32_t status, std::uint32_t key, std::uint32_t operation) {
  return record(132)
      .host32(112, status)
      .be32(116, key)
      .be32(120, operation)
      .be32(124, 0x55667788)
      .be32(128, 0x99aabbcc);
}

/** Entries whose values are 0xa1b2c300, 0xa1b2c301... */
Bytes entries(std::uint32_t count, std::uint32_t claimed) {
  Bytes all = be32(claimed) + be32(0x0badcafe) + be32(0x12345678);
  for (std::uint32_t i = 0; i < count; ++i) {
    all = all + Record(40)
                    .be32(0, 0xa1b2c300 + i)
                    .u8(4, static_cast<std::uint8_t>(0x40 + i))
                    .fill(5, 32, static_cast<std::uint8_t>(0x80 + i))
                    .fill(37, 3, 0xff);
  }
  return all;
}
Bytes entries(std::uint32_t count) {
  return entries(count, count);
}

struct Parsed {
  std::uint32_t status = 0;
  std::uint32_t count = 0x7777;
  std::uint32_t word = 0x7777;
  std::uint32_t key = 0x7777;
  ficon_cmi_hist_entry_t* entries = reinterpret_cast<ficon_cmi_hist_entry_t*>(0x7777);

  bool untouched() const {
    return count == 0x7777 && word == 0x7777 && key == 0x7777 &&
           entries == reinterpret_cast<ficon_cmi_hist_entry_t*>(0x7777);
  }
};

Parsed parse(ScriptedPlatform& platform, const Bytes& reply) {
  Parsed out;
  out.status = ficon_cmi_parse_history_summary(platform.received(reply), &out.count, &out.word,
                                               &out.key, &out.entries);
  return out;
}

std::uint32_t get(ScriptedPlatform& platform, Parsed& out) {
  out.key = 0x11223344;
  return ficon_cmi_get_history_summary(0x01020304, platform.handle(), "VSH", "UNKNOWN", 5, 7,
                                       &out.key, 2, 0x55667788, 0x99aabbcc, &out.count, &out.word,
                                       &out.entries);
}

void check_entries(const Parsed& out, std::uint32_t count) {
  CHECK(out.status == 0);
  CHECK(out.count == count);
  CHECK(out.word == 0x12345678);
  for (std::uint32_t i = 0; i < count; ++i) {
    CHECK(difference(host32(0xa1b2c300 + i) + Bytes{static_cast<std::uint8_t>(0x40 + i)} +
                         Bytes(32, static_cast<std::uint8_t>(0x80 + i)),
                     [&] {
                       Bytes entry = bytes_of(out.entries[i]);
                       entry.resize(37);  // the rest is undefined
                       return entry;
                     }()) == "");
  }
}

}  // namespace

TEST_CASE("history: the request") {
  ScriptedPlatform platform;
  platform.expect_send(7864, golden("history.hex"));
  mts_msg_ref_t msg{};
  CHECK(ficon_cmi_get_history_summary_nonblock(0x01020304, platform.handle(), "VSH", "UNKNOWN", 5,
                                               7, 0x11223344, 2, 0x55667788, 0x99aabbcc,
                                               &msg) == 0);
  CHECK(platform.lines() ==
        "ficon_init_cmi_hdr 7 \"VSH\" \"UNKNOWN\" 20\n"
        "tlv_aligned_array_add_tlv capacity=2048 type=19 length=132\n"
        "tlv_aligned_array_size_get\n"
        "mts_send node=0xfe000000 sap=101 opcode=7864 length=140 options=1,1\n");
  mts_drop(platform.handle(), &msg);
  CHECK(platform.finished());
}

TEST_CASE("history: the position goes out and comes back") {
  ScriptedPlatform platform;
  platform.expect_send(7864, golden("history.hex"))
      .reply(tlvs().add(19, command(0, 0xf1e2d3c4, 2)).add(18, entries(3)));
  Parsed out;
  out.status = get(platform, out);
  CHECK(out.key == 0xf1e2d3c4);
  check_entries(out, 3);
  CHECK(platform.lines({"mtrack_alloc"}) == "mtrack_alloc module=205 type=1 size=120\n");
  mtrack_free(out.entries);
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("history: the two TLVs in either order, and a third that is never looked at") {
  for (const bool swapped : {false, true}) {
    CAPTURE(swapped);
    ScriptedPlatform platform;
    Tlvs reply;
    if (swapped) reply.add(18, entries(2));
    reply.add(19, command(0, 9, 0));
    if (!swapped) reply.add(18, entries(2));
    reply.add(19, command(0x40890077, 5, 7));
    Parsed out = parse(platform, reply);
    CHECK(out.key == 9);
    check_entries(out, 2);
    CHECK(platform.count("tlv_aligned_array_get_next_tlv") == 2);
    mtrack_free(out.entries);
    CHECK(platform.finished());
  }
}

TEST_CASE("history: no place for the position") {
  ScriptedPlatform platform;
  Parsed out;
  CHECK(ficon_cmi_parse_history_summary(
            platform.received(tlvs().add(19, command(0, 9, 0)).add(18, entries(1))), &out.count,
            &out.word, nullptr, &out.entries) == 0);
  check_entries(out, 1);
  mtrack_free(out.entries);
  CHECK(platform.finished());
}

TEST_CASE("history: no entries hand out null and leave the summary word") {
  ScriptedPlatform platform;
  const Parsed out = parse(platform, tlvs().add(19, command(0, 9, 1)).add(18, entries(0)));
  CHECK(out.status == 0);
  CHECK(out.count == 0);
  CHECK(out.entries == nullptr);
  CHECK(out.key == 9);
  CHECK(out.word == 0x7777);
  CHECK(platform.count("mtrack_alloc") == 0);
}

TEST_CASE("history: a refusal writes nothing, whatever else the reply holds") {
  ScriptedPlatform platform;
  const Parsed out = parse(platform, tlvs().add(19, command(0x408900c2, 9, 7)).add(20, entries(2)));
  CHECK(out.status == 0x408900c2);
  CHECK(out.untouched());
  CHECK(platform.printed().empty());
}

TEST_CASE("history: TLVs that are missing or not among the first two") {
  ScriptedPlatform platform;
  CHECK(parse(platform, tlvs()).untouched());
  Parsed empty;
  CHECK(ficon_cmi_parse_history_summary(platform.received_without_payload(), &empty.count,
                                        &empty.word, &empty.key, &empty.entries) == 0x40850003);
  const Parsed no_command =
      parse(platform, tlvs().add(18, entries(1)).add(12, zeros(128)).add(19, command(0, 9, 0)));
  CHECK(no_command.status == 0x40850003);
  CHECK(no_command.untouched());
  const Parsed no_summary = parse(
      platform, tlvs().add(19, command(0, 9, 0)).add(19, command(0, 8, 0)).add(18, entries(1)));
  CHECK(no_summary.status == 0x40850003);
  CHECK(no_summary.untouched());
  CHECK(platform.printed() ==
        "invalid cmi payload: no tlvs present\n"
        "invalid cmi payload: no tlvs present\n"
        "invalid cmi payload: command data tlv not found\n"
        "invalid cmi payload: summary data tlv not found\n");
}

TEST_CASE("history: a reply of one TLV ends in the walk's own error") {
  ScriptedPlatform platform;
  const Parsed out = parse(platform, tlvs().add(19, command(0, 9, 0)));
  CHECK(out.status != 0);
  CHECK(out.untouched());
  CHECK(platform.printed().empty());
}

TEST_CASE("history: an operation above 2 is told, after the position is handed out") {
  for (const std::uint32_t operation : {3u, 0x02000000u, 0xffffffffu}) {
    ScriptedPlatform platform;
    const Parsed out =
        parse(platform, tlvs().add(19, command(0, 9, operation)).add(18, entries(1, 5)));
    CHECK(out.status == 0x40850003);
    CHECK(out.key == 9);
    CHECK(out.entries == nullptr);
    CHECK(out.count == 0x7777);
    CHECK(platform.printed() == "invalid cmi payload: hist ops tlv not found\n");
  }
}

TEST_CASE("history: a count that does not fit its TLV writes nothing") {
  const Bytes summaries[] = {entries(2, 3), entries(0, 1), entries(1, 0x80000001),
                             entries(1, 0xffffffff), entries(1, 0x0ccccccd)};
  for (const Bytes& summary : summaries) {
    ScriptedPlatform platform;
    const Parsed out = parse(platform, tlvs().add(19, command(0, 9, 0)).add(18, summary));
    CHECK(out.status == 0x40850003);
    CHECK(out.untouched());
    CHECK(platform.count("mtrack_alloc") == 0);
    CHECK(platform.printed().empty());
  }
  ScriptedPlatform platform;
  Bytes cut = entries(1);
  cut.pop_back();
  CHECK(parse(platform, tlvs().add(19, command(0, 9, 0)).add(18, cut)).untouched());
}

TEST_CASE("history: as many entries as a TLV holds, and more bytes than entries") {
  ScriptedPlatform platform;
  Parsed out = parse(platform, tlvs().add(19, command(0, 9, 0)).add(18, entries(1) + zeros(39)));
  check_entries(out, 1);
  mtrack_free(out.entries);
  constexpr std::uint32_t kMost = (65535 - 12) / 40;
  Bytes many = entries(0, kMost) + zeros(kMost * 40);
  out = parse(platform, tlvs().add(19, command(0, 9, 0)).add(18, many));
  CHECK(out.status == 0);
  CHECK(out.count == 1638);
  mtrack_free(out.entries);
  CHECK(platform.finished());
}

TEST_CASE("history: without memory no entries are handed out") {
  ScriptedPlatform platform;
  platform.fail_allocation(1);
  const Parsed out = parse(platform, tlvs().add(19, command(0, 9, 0)).add(18, entries(2)));
  CHECK(out.status == 0x40850010);
  CHECK(out.entries == nullptr);
  CHECK(platform.printed() ==
        "Warning! Malloc Failure in feature/ficon/cmi/tevrak.cpp[1992] for size 80\n");
}

TEST_CASE("history: a failed send is told, without a get") {
  ScriptedPlatform platform;
  platform.expect_send(7864).fails(32);
  Parsed out;
  CHECK(get(platform, out) == 0xffffffff);
  CHECK(out.key == 0x11223344);
  CHECK(platform.printed() ==
        "ficon_cmi_get_history_summary(1834):ficon_cmi_history_summary_nonblock failed:-1\n");
  CHECK(platform.finished());
}

TEST_CASE("history: a failed receive is not told") {
  ScriptedPlatform platform;
  platform.expect_send(7864).recv_errors({62});
  Parsed out;
  CHECK(get(platform, out) == 0x40850043);
  CHECK(out.key == 0x11223344);
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}
