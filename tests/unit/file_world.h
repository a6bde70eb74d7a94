/** What the tests of configuration files have in common. */
#pragma once

#include <cctype>
#include <cstring>
#include <string>
#include <string_view>

#include "double/fakes.h"
#include "double/scripted_platform.h"

namespace ficon::test {

inline constexpr std::uint32_t kFileVsan = 0x11223344;
inline constexpr std::uint32_t kCodepage = 0x01010037;

/** The pieces of `order()` around a request under the lock. */
inline const std::string kEnabledCheck =
    "ficon_send_get_enabled_vsans, token, drop request, recv, ficon_parse_get_enabled_vsans, free, "
    "drop reply";
inline const std::string kLockExchange = "send 7874, token, drop request, recv, drop reply";
inline const std::string kCodepageExchange = "send 7855, token, drop request, recv, drop reply";

inline std::string exchange_of(int opcode) {
  return "send " + std::to_string(opcode) + ", token, drop request, recv, drop reply";
}

/** A caller's buffer with a name: twelve bytes, since some functions hand a name back in it. */
struct Name {
  char text[12] = {};
  explicit Name(std::string_view name) {
    std::memcpy(text, name.data(), std::min(name.size(), sizeof text - 1));
  }
  operator char*() { return text; }
};

/** The VSAN query that code pages come from. 0 stands for a VSAN without one. */
inline void expect_codepage(ScriptedPlatform& platform, std::uint32_t codepage = kCodepage) {
  platform.expect_send(7855).reply(
      tlvs().header_status(0).add(2, record(1347).be32(0, kFileVsan).host32(20, codepage)));
}

/** fcd's answer to a change: the file request record with a status. */
inline Bytes file_answer(std::uint32_t status) {
  return tlvs().add(6, record(158).host32(141, status));
}

/** Printed text with every "(123)" and "[123]" turned into "(N)" and "[N]": source lines move. */
inline std::string without_lines(const std::string& printed) {
  std::string result;
  for (std::size_t i = 0; i < printed.size(); ++i) {
    result += printed[i];
    if (printed[i] != '(' && printed[i] != '[') continue;
    std::size_t end = i + 1;
    while (end < printed.size() && std::isdigit(static_cast<unsigned char>(printed[end])) != 0) {
      ++end;
    }
    if (end == i + 1 || end == printed.size() || (printed[end] != ')' && printed[end] != ']')) {
      continue;
    }
    result += 'N';
    i = end - 1;
  }
  return result;
}

}  // namespace ficon::test
