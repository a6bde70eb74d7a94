/** Per-port information of a file: the requests, and the blocking forms in plain mode. */
#include <doctest/doctest.h>

#include "unit/port_info_forms.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kKey = 0xa1b2c3d4;
constexpr std::size_t kMessageTypeAt = 8, kNameAt = 8 + 128, kKeyAt = 8 + 137;

std::uint32_t send(ScriptedPlatform& platform, const PortInfoForm& form, char* name,
                   const std::uint32_t* key, std::uint32_t convert) {
  mts_msg_ref_t msg{};
  const auto status = form.send(platform, name, key, convert, &msg);
  if (status == 0) mts_drop(platform.handle(), &msg);
  return status;
}

Bytes whole_answer() {
  return golden("port_info_answer.hex").bytes();
}

}  // namespace

TEST_CASE("port info: both requests, query flags and requester in host order") {
  for (const PortInfoForm& form : port_info_forms()) {
    CAPTURE(form.name);
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    platform.expect_send(7856, golden(form.golden_name));
    Name name("name_1-b");
    CHECK(send(platform, form, name, &kKey, 1) == 0);
    CHECK(platform.lines({"tlv_aligned_array_add_tlv"}) ==
          "tlv_aligned_array_add_tlv capacity=2048 type=13 length=145\n"
          "tlv_aligned_array_add_tlv capacity=2048 type=" +
              std::string(form.name == "intf" ? "32" : "8") + " length=8\n");
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
}

TEST_CASE("port info: no name and an empty one are zeros, raw names go as they are") {
  for (const PortInfoForm& form : port_info_forms()) {
    const Golden request = golden(form.golden_name);
    ScriptedPlatform platform;
    const Golden unnamed = request.with(kNameAt, zeros(8)).with(kKeyAt, zeros(4));
    platform.expect_send(7856, unnamed);
    platform.expect_send(7856, unnamed);
    platform.expect_send(7856, request.with(kNameAt, {'a', 0, 1, 2, 3, 4, 5, 0xff}));
    char empty[8] = {0, 'x', 'y'};
    char raw[8] = {'a', 0, 1, 2, 3, 4, 5, static_cast<char>(0xff)};
    CHECK(send(platform, form, nullptr, nullptr, 1) == 0);
    CHECK(send(platform, form, empty, nullptr, 0) == 0);
    CHECK(send(platform, form, raw, &kKey, 2) == 0);
    CHECK(platform.finished());
  }
}

TEST_CASE("port info: a name that is refused, a send that fails") {
  for (const PortInfoForm& form : port_info_forms()) {
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    Name blank(" A"), good("A");
    CHECK(send(platform, form, blank, nullptr, 1) == 0x4085001d);
    CHECK(platform.sent(7856).empty());
    platform.expect_send(7856).fails(32);
    CHECK(send(platform, form, good, nullptr, 1) == 0xffffffff);
    CHECK(platform.history().empty());
    CHECK(platform.finished());
  }
}

TEST_CASE("port info, blocking: type, code page, query with neither check nor lock") {
  for (const PortInfoForm& form : port_info_forms()) {
    for (const std::uint32_t msgtype : {1U, 2U}) {
      CAPTURE(form.name);
      ScriptedPlatform platform;
      play_converter(platform, ebcdic);
      expect_getnext_type(platform, kPlainType);
      expect_codepage(platform);
      platform.expect_send(7856, golden(form.golden_name).with(kMessageTypeAt, be32(msgtype)))
          .reply(whole_answer());
      PortInfoResult out;
      CHECK(form.get(platform, msgtype, 0x01020304, 0x05060708, &kKey, out) == 0);
      CHECK(out.vsan == 0x51525354);
      CHECK(std::string(out.name.text) == "NAME_1-B");
      CHECK(out.count == 1);
      REQUIRE(out.list != nullptr);
      mtrack_free(out.list);
      CHECK(traced(platform) ==
            "CMI_ERROR: Start 16909060 End 84281096\n"
            "CMI_ERROR: Returning SOON retval:0 msg_type:" +
                std::to_string(msgtype) + " type:1\n");
      CHECK(platform.printed().empty());
      CHECK(platform.sent(7874).empty());
      CHECK(platform.finished());
    }
  }
}

TEST_CASE("port info, blocking: in installed mode a get is like any other") {
  for (const PortInfoForm& form : port_info_forms()) {
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    expect_getnext_type(platform, kInstalledType);
    expect_codepage(platform);
    platform.expect_send(7856, golden(form.golden_name).with(kMessageTypeAt, be32(1)))
        .reply(whole_answer());
    PortInfoResult out;
    CHECK(form.get(platform, 1, 0x01020304, 0x05060708, &kKey, out) == 0);
    CHECK(out.count == 1);
    mtrack_free(out.list);
    CHECK(platform.finished());
  }
}

TEST_CASE("port info, blocking: without a VSAN nothing happens") {
  ScriptedPlatform platform;
  CHECK(ficon_cmi_file_get_port_info_intf(1, platform.handle(), "A", "B", 5, 1, 0, nullptr, nullptr,
                                          nullptr, 1, 2, nullptr, nullptr) == 0x40850004);
  CHECK(ficon_cmi_file_get_port_info_portaddr(1, platform.handle(), "A", "B", 5, 1, 0, nullptr,
                                              nullptr, nullptr, 1, 2, nullptr,
                                              nullptr) == 0x40850004);
  CHECK(platform.calls().empty());
}

TEST_CASE("port info, blocking: a type that cannot be had, a code page that is not there") {
  for (const PortInfoForm& form : port_info_forms()) {
    ScriptedPlatform platform;
    platform.expect_send(7883).reply(record(120).host32(112, 0x40890077));
    PortInfoResult out;
    CHECK(form.get(platform, 1, 1, 2, nullptr, out) == 0x40890077);
    CHECK(traced(platform) == "CMI_ERROR: ficon_cmi_get_getnext_type failed 0x40890077\n");
    expect_getnext_type(platform, kPlainType);
    expect_codepage(platform, 0);
    CHECK(form.get(platform, 1, 1, 2, nullptr, out) == 0x40850004);
    CHECK(out.list == nullptr);
    CHECK(platform.finished());
  }
}

TEST_CASE("port info, blocking: the first VSAN's code page for a get next that names nothing") {
  struct Case {
    std::uint32_t msgtype, vsan;
    std::string name;
    bool first;
  };
  for (const PortInfoForm& form : port_info_forms()) {
    for (const Case& c : {Case{2, 0, "", true}, Case{1, 0, "", false}, Case{2, 7, "", false},
                          Case{2, 0, "A", false}}) {
      ScriptedPlatform platform;
      play_converter(platform, ebcdic);
      expect_getnext_type(platform, kPlainType);
      expect_codepage(platform);
      platform.expect_send(7856).reply(tlvs().add(13, info_head()));
      PortInfoResult out;
      out.vsan = c.vsan;
      out.name = Name(c.name);
      CHECK(form.get(platform, c.msgtype, 1, 2, nullptr, out) == 0);
      CHECK(read_be32(platform.sent(7855).at(0), 8) == (c.first ? 2 : 1));
      CHECK(read_be32(platform.sent(7856).at(0), 8 + 116) == c.vsan);
      CHECK(platform.finished());
    }
  }
}

TEST_CASE("port info, blocking: a failed send is traced under the function's own name") {
  for (const PortInfoForm& form : port_info_forms()) {
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    expect_getnext_type(platform, kPlainType);
    expect_codepage(platform);
    platform.expect_send(7856).fails(32);
    PortInfoResult out;
    CHECK(form.get(platform, 1, 1, 2, nullptr, out) == 0xffffffff);
    const std::string function = "ficon_cmi_file_get_port_info_" + form.name;
    CHECK(without_lines(traced(platform)) == "CMI_ERROR: Start 1 End 2\nCMI_ERROR: " + function +
                                                 "(N):" + function + "_nonblock failed:-1\n");
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
}

TEST_CASE("port info, blocking: a reply that does not come, one that is refused") {
  for (const PortInfoForm& form : port_info_forms()) {
    for (const std::uint32_t installed : {kPlainType, kInstalledType}) {
      ScriptedPlatform platform;
      play_converter(platform, ebcdic);
      play_interfaces(platform, {1, 2, 3});
      expect_getnext_type(platform, installed);
      expect_codepage(platform);
      platform.expect_send(7856).recv_errors({62});
      PortInfoResult out;
      ficon_cmi_port_info_t before{};
      out.list = &before;
      CHECK(form.get(platform, 2, 1, 2, nullptr, out) == 0x40850043);
      CHECK(out.list == &before);
      expect_getnext_type(platform, installed);
      expect_codepage(platform);
      platform.expect_send(7856).reply(tlvs().add(0, info_port(1, 2)).add(13, info_head(9)));
      CHECK(form.get(platform, 2, 1, 2, nullptr, out) == 9);
      CHECK(platform.history().back() == "CMI_ERROR: Returning SOON retval:9 msg_type:2 type:" +
                                             std::to_string(installed) + "\n");
      CHECK(out.list == nullptr);
      CHECK(out.count == 0x99);
      CHECK(platform.finished());
    }
  }
}

TEST_CASE("port info, blocking: in the search for an installed port the count of all is not told") {
  for (const PortInfoForm& form : port_info_forms()) {
    for (const std::uint32_t type : {kPlainType, kInstalledType}) {
      ScriptedPlatform platform;
      play_converter(platform, ebcdic);
      play_interfaces(platform, {1, 2, 3});
      expect_getnext_type(platform, type);
      expect_codepage(platform);
      platform.expect_send(7856).reply(
          tlvs().add(13, info_head()).add(0, info_port(1, 2)).add(0, zeros(106)));
      PortInfoResult out;
      CHECK(form.get(platform, 2, 1, 2, nullptr, out) == 0x40850003);
      CHECK(out.count == (type == kInstalledType ? 0x99 : 2));
      CHECK(out.list == nullptr);
      CHECK(platform.finished());
    }
  }
}
