/** Per-port information of a file: the reply, and what hostile ones come to. */
#include <doctest/doctest.h>

#include "unit/port_info_forms.h"

using namespace ficon::test;

namespace {

/** A parsed reply; the list is released at the end. */
struct Parsed {
  ScriptedPlatform platform;
  ficon_cmi_port_info_t* list = nullptr;
  std::uint32_t vsan = 0x77;
  char name[10] = "unchanged";
  std::uint32_t count = 0x99;
  std::uint32_t status = 0;

  explicit Parsed(const Bytes& reply, std::uint32_t convert = 1, Conversion converter = ebcdic) {
    play_converter(platform, std::move(converter));
    status = ficon_cmi_file_parse_port_info(1, platform.received(reply), &list, &vsan, name,
                                            convert, 37, &count);
    CHECK(platform.printed().empty());
  }
  ~Parsed() { mtrack_free(list); }
};

Bytes whole_answer() {
  return golden("port_info_answer.hex").bytes();
}

}  // namespace

TEST_CASE("port info reply: VSAN, name and ports, names in ASCII, the rest untouched") {
  Parsed reply(whole_answer());
  CHECK(reply.status == 0);
  CHECK(reply.vsan == 0x51525354);
  CHECK(std::string(reply.name) == "NAME_1-B");
  REQUIRE(reply.count == 1);
  const Bytes answer = whole_answer();
  const Bytes expected = Record(107)
                             .put(0, Bytes(answer.begin() + 157, answer.end()))
                             .text(18, "Tape 1                  ")
                             .u8(42, 0);
  CHECK(difference(expected, bytes_of(*reply.list)) == "");
  CHECK(reply.platform.lines({"mtrack_alloc"}) == "mtrack_alloc module=205 type=4 size=107\n");
  CHECK(reply.platform.history().empty());
}

TEST_CASE("port info reply: without conversion names stay as they came, the file's is ended") {
  Parsed reply(whole_answer(), 0);
  CHECK(reply.status == 0);
  CHECK(Bytes(reply.name, reply.name + 9) ==
        Bytes{0xd5, 0xc1, 0xd4, 0xc5, 0x6d, 0xf1, 0x60, 0xc2, 0});
  const Bytes answer = whole_answer();
  CHECK(difference(Bytes(answer.begin() + 157, answer.end()), bytes_of(*reply.list)) == "");
  CHECK(reply.platform.count("convert") == 0);
}

TEST_CASE("port info reply: without conversion the name is ended in the reply itself") {
  for (const std::uint32_t convert : {0U, 1U, 2U}) {
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    mts_msg_ref_t* message = platform.received(whole_answer());
    ficon_cmi_port_info_t* list = nullptr;
    std::uint32_t count = 0;
    char name[9];
    REQUIRE(ficon_cmi_file_parse_port_info(1, message, &list, nullptr, name, convert, 37, &count) ==
            0);
    CHECK(static_cast<const std::uint8_t*>(mts_payload_get(message))[8 + 136] ==
          (convert == 1 ? 0x7f : 0));
    mtrack_free(list);
    CHECK(platform.finished());
  }
}

TEST_CASE("port info reply: ports back to back, in order, wherever the head stands") {
  Tlvs array = tlvs();
  array.add(0, info_port(0, 100));
  array.add(13, info_head());
  array.add(99, zeros(3));
  for (std::uint32_t i = 1; i < 254; ++i) array.add(0, info_port(i, 100 + i));
  Parsed reply(array);
  CHECK(reply.status == 0);
  REQUIRE(reply.count == 254);
  for (std::uint32_t i = 0; i < 254; ++i) {
    CHECK(std::int32_t{reply.list[i].port} == static_cast<std::int32_t>(i));
    CHECK(if_index_t{reply.list[i].if_index} == 100 + i);
  }
  CHECK(reply.platform.lines({"mtrack_alloc"}) == "mtrack_alloc module=205 type=4 size=27178\n");
}

TEST_CASE("port info reply: a head alone is no port and no array") {
  Parsed reply(tlvs().add(13, info_head()));
  CHECK(reply.status == 0);
  CHECK(reply.count == 0);
  CHECK(reply.list == nullptr);
  CHECK(reply.platform.count("mtrack_alloc") == 0);
}

TEST_CASE("port info reply: a status beats the ports that follow") {
  Parsed reply(tlvs().add(13, info_head(5)).add(0, info_port(1, 2)));
  CHECK(reply.status == 5);
  CHECK(reply.list == nullptr);
  CHECK(reply.vsan == 0x77);
  CHECK(reply.count == 0x99);
  CHECK(traced(reply.platform) == "CMI_ERROR: status was 5\n");
}

TEST_CASE("port info reply: no TLVs, no head, a walk that fails in either pass") {
  const std::string prefix = "CMI_ERROR: ";
  struct Case {
    Bytes reply;
    std::uint32_t status;
    std::string trace;
  };
  for (const Case& c :
       {Case{tlvs(), 0x40850003, "invalid cmi payload: no tlvs present\n"},
        Case{tlvs().add(0, info_port(1, 2)), 0x40850003, "Unrecognised response for the request\n"},
        Case{tlvs().add(13, info_head()).add_claiming(0, 300, zeros(107)), 0x40aa0100,
             "tlv_next_tlv gave error\n"}}) {
    Parsed reply(c.reply);
    CHECK(reply.status == c.status);
    CHECK(traced(reply.platform) == prefix + c.trace);
    CHECK(reply.list == nullptr);
  }
}

TEST_CASE("port info reply: no payload is like no TLVs") {
  ScriptedPlatform platform;
  CHECK(ficon_cmi_file_parse_port_info(1, platform.received_without_payload(), nullptr, nullptr,
                                       nullptr, 1, 37, nullptr) == 0x40850003);
  CHECK(traced(platform) == "CMI_ERROR: invalid cmi payload: no tlvs present\n");
}

TEST_CASE("port info reply: a walk that fails in the second pass frees the array") {
  ScriptedPlatform platform;
  play_converter(platform, ebcdic);
  ficon_cmi_port_info_t* list = nullptr;
  std::uint32_t count = 0;
  mts_msg_ref_t* reply = platform.received(tlvs().add(13, info_head()).add(0, info_port(1, 2)));
  platform.fail_call(7);  // payload, count, two TLVs, the array, then a TLV and this one
  CHECK(ficon_cmi_file_parse_port_info(1, reply, &list, nullptr, nullptr, 1, 37, &count) ==
        kInjected);
  CHECK(traced(platform) == "CMI_ERROR: Next tlv failed for ports.\n");
  CHECK(list == nullptr);
  CHECK(platform.finished());
}

TEST_CASE("port info reply: a port of another size fails all and frees the array") {
  for (const std::size_t size : {0U, 106U, 108U}) {
    Parsed reply(tlvs().add(13, info_head()).add(0, info_port(1, 2)).add(0, zeros(size)));
    CHECK(reply.status == 0x40850003);
    CHECK(reply.list == nullptr);
    CHECK(reply.platform.leaks().empty());
    CHECK(traced(reply.platform) == "CMI_ERROR: Invalid size of ficon_cmi_port_info_t payload\n");
  }
}

TEST_CASE(
    "port info reply: without a place for the count it is refused, without others it is not") {
  for (const bool counted : {false, true}) {
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    ficon_cmi_port_info_t* list = nullptr;
    std::uint32_t count = 0;
    CHECK(ficon_cmi_file_parse_port_info(1, platform.received(whole_answer()), &list, nullptr,
                                         nullptr, 1, 37,
                                         counted ? &count : nullptr) == (counted ? 0 : 0x40850003));
    CHECK((list != nullptr) == counted);
    mtrack_free(list);
    CHECK(platform.finished());
  }
}

TEST_CASE("port info reply: without a place for the count not even no ports are told") {
  ScriptedPlatform platform;
  mts_msg_ref_t* reply = platform.received(tlvs().add(13, info_head()));
  CHECK(ficon_cmi_file_parse_port_info(1, reply, nullptr, nullptr, nullptr, 1, 37, nullptr) ==
        0x40850003);
}

TEST_CASE("port info reply: without memory the plain 1") {
  ScriptedPlatform platform;
  play_converter(platform, ebcdic);
  platform.fail_allocation(1);
  ficon_cmi_port_info_t* list = nullptr;
  std::uint32_t count = 0;
  CHECK(ficon_cmi_file_parse_port_info(1, platform.received(whole_answer()), &list, nullptr,
                                       nullptr, 1, 37, &count) == 1);
  CHECK(traced(platform) == "CMI_ERROR: No mem for ports data\n");
  CHECK(without_lines(platform.printed()) ==
        "Warning! Malloc Failure in feature/ficon/cmi/tevrak.cpp[N] for size 107\n");
  CHECK(list == nullptr);
}

TEST_CASE("port info reply: a file name that cannot be converted fails all") {
  Bytes head = info_head();
  head[128] = 'x';
  head[129] = 'y';
  head[130] = 0;
  Parsed file(tlvs().add(13, head).add(0, info_port(1, 2)));
  CHECK(file.status == 0x40850003);
  CHECK(traced(file.platform) == "CMI_ERROR: conversion of xy (codepage:37) to ascii failed\n");
}

TEST_CASE("port info reply: a port's name that cannot be converted fails all") {
  const auto ports_fail = [](const Bytes& input, std::uint32_t from, std::uint32_t to) {
    return input.size() == 24 ? std::nullopt : ebcdic(input, from, to);
  };
  Parsed reply(tlvs().add(13, info_head()).add(0, info_port(0x1a, 2)), 1, ports_fail);
  CHECK(reply.status == 0x40850020);
  CHECK(reply.list == nullptr);
  CHECK(reply.platform.leaks().empty());
  CHECK(traced(reply.platform) == "CMI_ERROR: ascii conversion of portname for port 26 failed\n");
}

TEST_CASE("port info reply: unprintable names are marked by their port, or refused beyond 255") {
  const auto control = [](const Bytes& input, std::uint32_t from, std::uint32_t to) {
    auto output = ebcdic(input, from, to);
    if (input.size() == 24) (*output)[1] = 0x07;
    return output;
  };
  for (const std::int32_t port : {0x1a, 256, -1}) {
    Parsed reply(tlvs().add(13, info_head()).add(0, info_port(static_cast<std::uint32_t>(port), 2)),
                 1, control);
    CHECK(reply.status == (port == 0x1a ? 0 : 0x40850018));
    if (port == 0x1a) CHECK(std::string(reply.list->port_name, 23) == "A\"                   ~1");
    CHECK((reply.list != nullptr) == (port == 0x1a));
  }
}

TEST_CASE("port info reply: a head too short for a status reads as zeros") {
  Parsed reply(tlvs().add(13, Bytes(128, 0xc1)));
  CHECK(reply.status == 0x40850003);  // eight zero bytes are no name
}
