/** The two families of per-port information, and replies to them. */
#pragma once

#include <string>
#include <vector>

#include "unit/file_world.h"

namespace ficon::test {

inline constexpr std::uint32_t kInfoRequester = 0x21222324;
inline constexpr std::uint32_t kQueryFlags = 0x31323334;
inline constexpr std::uint32_t kPlainType = 1, kInstalledType = 2;

/** What a blocking query gives. */
struct PortInfoResult {
  std::uint32_t vsan = kFileVsan;
  Name name{"name_1-b"};
  ficon_cmi_port_info_t* list = nullptr;
  std::uint32_t count = 0x99;
};

struct PortInfoForm {
  std::string name;
  std::string golden_name;
  std::uint32_t (*send)(ScriptedPlatform&, char* name, const std::uint32_t* key,
                        std::uint32_t convert, mts_msg_ref_t*);
  std::uint32_t (*get)(ScriptedPlatform&, std::uint32_t msgtype, std::uint32_t start,
                       std::uint32_t end, const std::uint32_t* key, PortInfoResult&);
};

inline const std::vector<PortInfoForm>& port_info_forms() {
  static const std::vector<PortInfoForm> forms = {
      {"intf", "port_info_interfaces.hex",
       [](ScriptedPlatform& p, char* name, const std::uint32_t* key, std::uint32_t convert,
          mts_msg_ref_t* msg) {
         return ficon_cmi_file_get_port_info_intf_nonblock(
             kInfoRequester, p.handle(), "VSH", "UNKNOWN", 5, 2, kQueryFlags, kFileVsan, name, key,
             0x01020304, 0x05060708, convert, 37, msg);
       },
       [](ScriptedPlatform& p, std::uint32_t msgtype, std::uint32_t start, std::uint32_t end,
          const std::uint32_t* key, PortInfoResult& out) {
         return ficon_cmi_file_get_port_info_intf(kInfoRequester, p.handle(), "VSH", "UNKNOWN", 5,
                                                  msgtype, kQueryFlags, &out.vsan, out.name, key,
                                                  start, end, &out.list, &out.count);
       }},
      {"portaddr", "port_info_addresses.hex",
       [](ScriptedPlatform& p, char* name, const std::uint32_t* key, std::uint32_t convert,
          mts_msg_ref_t* msg) {
         return ficon_cmi_file_get_port_info_portaddr_nonblock(
             kInfoRequester, p.handle(), "VSH", "UNKNOWN", 5, 2, kQueryFlags, kFileVsan, name, key,
             0x01020304, 0x05060708, convert, 37, msg);
       },
       [](ScriptedPlatform& p, std::uint32_t msgtype, std::uint32_t start, std::uint32_t end,
          const std::uint32_t* key, PortInfoResult& out) {
         return ficon_cmi_file_get_port_info_portaddr(kInfoRequester, p.handle(), "VSH", "UNKNOWN",
                                                      5, msgtype, kQueryFlags, &out.vsan, out.name,
                                                      key, start, end, &out.list, &out.count);
       }},
  };
  return forms;
}

inline void expect_getnext_type(ScriptedPlatform& platform, std::uint32_t type) {
  platform.expect_send(7883).reply(record(120).host32(116, type));
}

/** The head of a reply; its name is "NAME_1-B" in EBCDIC. */
inline Record info_head(std::uint32_t status = 0) {
  return record(145)
      .be32(116, kFileVsan)
      .put(128, {0xd5, 0xc1, 0xd4, 0xc5, 0x6d, 0xf1, 0x60, 0xc2})
      .host32(141, status);
}

/** A port with the name "A". */
inline Record info_port(std::uint32_t port, std::uint32_t if_index) {
  return record(107).host32(4, port).host32(8, if_index).fill(18, 24, 0x40).u8(18, 0xc1);
}

inline std::string traced(const ScriptedPlatform& platform) {
  std::string text;
  for (const std::string& line : platform.history()) text += line;
  return text;
}

}  // namespace ficon::test
