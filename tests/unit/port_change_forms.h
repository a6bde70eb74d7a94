/** The three blocking changes of ports in a file, and the story that their requests tell. */
#pragma once

#include <string>
#include <vector>

#include "unit/file_world.h"

namespace ficon::test {

struct PortChange {
  std::string name;
  bool prints;            // when its sender fails
  bool leaves_edit_open;  // when the reply does not come
  std::uint32_t (*run)(ScriptedPlatform&, std::uint32_t requester, char* file_name,
                       std::uint32_t* key, std::uint32_t* status);
};

inline const std::vector<PortChange>& port_changes() {
  static const std::vector<PortChange> forms = {
      {"blocked", true, true,
       [](ScriptedPlatform& p, std::uint32_t requester, char* name, std::uint32_t* key,
          std::uint32_t* status) {
         const ficon_cmi_port_blocked_entry_t entry{1, 1};
         return ficon_cmi_file_set_port_blocked_portaddr(requester, p.handle(), "VSH", "UNKNOWN", 5,
                                                         kFileVsan, name, key, &entry, 1, status);
       }},
      {"name", false, false,
       [](ScriptedPlatform& p, std::uint32_t requester, char* name, std::uint32_t* key,
          std::uint32_t* status) {
         const ficon_cmi_port_name_entry_t entry{1, "Tape 1"};
         return ficon_cmi_file_set_port_name_portaddr(requester, p.handle(), "VSH", "UNKNOWN", 5,
                                                      kFileVsan, name, key, &entry, 1, status);
       }},
      {"prohibit", true, false,
       [](ScriptedPlatform& p, std::uint32_t requester, char* name, std::uint32_t* key,
          std::uint32_t* status) {
         const ficon_cmi_prohibit_entry_t entry{};
         return ficon_cmi_file_set_prohibit_bitset(requester, p.handle(), "VSH", "UNKNOWN", 5,
                                                   kFileVsan, name, key, &entry, 1, status);
       }},
  };
  return forms;
}

/** The requests in their order: "lock", "free", "code page", "open", "change", "keep", "discard".
 */
inline std::string story(const ScriptedPlatform& platform) {
  std::string text;
  std::map<std::uint32_t, std::size_t> seen;
  for (const std::string& line : platform.calls({"mts_send"})) {
    const auto opcode =
        static_cast<std::uint32_t>(std::stoul(line.substr(line.find("opcode=") + 7)));
    const Bytes payload = platform.sent(opcode).at(seen[opcode]++);
    std::string word = "?";
    if (opcode == 7855) word = "code page";
    if (opcode == 7866) word = "change";
    if (opcode == 7874) word = payload.at(4) == 1 ? "lock" : "free";
    if (opcode == 7861) {
      const std::uint32_t operation = read_be32(payload, 8 + 116);
      word = operation == 1   ? "open"
             : operation == 4 ? "keep"
             : operation == 5 ? "discard"
                              : "operation " + std::to_string(operation);
    }
    text += (text.empty() ? "" : ", ") + word;
  }
  return text;
}

}  // namespace ficon::test
