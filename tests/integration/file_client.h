/** A client of configuration files through the library. */
#pragma once

#include <doctest/doctest.h>
#include <ficon_cmi.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "own_process.h"
#include "wire/file_request.h"
#include "wire/port_info.h"

namespace ficon::test {

inline constexpr std::uint32_t kFileVsan = 20;
inline constexpr std::uint32_t kFileWait = 20'000;
inline constexpr std::uint32_t kPorts = 254;

using Masks = std::array<std::array<std::uint8_t, 32>, kPorts>;

/** Prohibits every pair of ports whose addresses, added up, can be divided by `divisor`. */
inline Masks masks_of(std::uint32_t divisor) {
  Masks masks{};
  for (std::uint32_t a = 0; a < kPorts; ++a) {
    for (std::uint32_t b = 0; b < kPorts; ++b) {
      if (a == b || (a + b) % divisor != 0) continue;
      masks[a][b / 8] |= static_cast<std::uint8_t>(0x80 >> (b % 8));
    }
  }
  return masks;
}

class FileClient {
 public:
  explicit FileClient(const std::string& socket, std::uint32_t requester = 1)
      : own_(socket), requester_(requester) {}

  mts_handle_t handle() const { return own_.get(); }

  bool enable() const {
    return handle() != nullptr &&
           ficon_cmi_set_ficon_state(1, handle(), "TEST", "FILES", kFileWait, kFileVsan, 1) == 0;
  }

  /** Operations on a name, on a key, or on both; an empty name is null. */
  std::uint32_t operate(wire::FileOperation operation, const std::string& name,
                        std::uint32_t* key = nullptr, std::uint8_t* flag = nullptr) const {
    Name buffer(name);
    return call(ficon_cmi_file_ops, static_cast<std::uint32_t>(operation), buffer.get(), key, flag,
                nullptr);
  }
  std::uint32_t copy(const std::string& from, const std::string& to) const {
    Name source(from);
    Name target(to);
    return call(ficon_cmi_file_copy, source.get(), target.get());
  }
  std::uint32_t block(const std::string& name, std::uint16_t address, std::uint8_t blocked = 1,
                      std::uint32_t* key = nullptr) const {
    Name buffer(name);
    const ficon_cmi_port_blocked_entry_t entry{address, blocked};
    return call(ficon_cmi_file_set_port_blocked_portaddr, buffer.get(), key, &entry, 1U, nullptr);
  }
  std::uint32_t prohibit(const std::string& name, const Masks& masks,
                         std::uint32_t count = kPorts) const {
    std::vector<ficon_cmi_prohibit_entry_t> entries(count);
    for (std::uint32_t a = 0; a < count; ++a) {
      entries[a].port_address = a % kPorts;
      std::ranges::copy(masks[a % kPorts], entries[a].bitset);
    }
    Name buffer(name);
    return call(ficon_cmi_file_set_prohibit_bitset, buffer.get(), nullptr, entries.data(), count,
                nullptr);
  }

  /** The ports of a file, of an edit, or with an empty name of the active configuration. */
  std::vector<wire::PortInfo> ports(const std::string& name, std::uint32_t* key = nullptr) const {
    char buffer[9] = {};  // written back by the reply
    name.copy(buffer, 8);
    std::uint32_t vsan = kFileVsan;
    ficon_cmi_port_info_t* list = nullptr;
    std::uint32_t count = 0;
    REQUIRE(call_plain(ficon_cmi_file_get_port_info_portaddr, 1U, 0U, &vsan, buffer, key, 0U, 0xfdU,
                       &list, &count) == 0);
    std::vector<wire::PortInfo> ports(count);
    std::memcpy(ports.data(), list, count * sizeof(wire::PortInfo));
    mtrack_free(list);
    return ports;
  }
  bool blocked(const std::string& name, std::uint32_t address) const {
    return ports(name).at(address).blocked != 0;
  }
  Masks masks(const std::string& name) const {
    Masks masks{};
    const auto all = ports(name);
    REQUIRE(all.size() == kPorts);
    for (std::uint32_t a = 0; a < kPorts; ++a)
      std::ranges::copy(all[a].prohibited.raw, masks[a].begin());
    return masks;
  }
  /** The names that the director lists, blanks cut off. */
  std::vector<std::string> names() const {
    ficon_cmi_file_info_t* list = nullptr;
    std::uint32_t count = 0;
    REQUIRE(call_plain(ficon_cmi_file_info, 0U, 1U, kFileVsan, nullptr, &list, &count) == 0);
    std::vector<std::string> names;
    for (std::uint32_t i = 0; i < count; ++i) {
      std::string name(list[i].file_name);
      names.push_back(name.substr(0, name.find(' ')));
    }
    mtrack_free(list);
    return names;
  }

  /** Any function of the library that has the VSAN behind its leading parameters. */
  template <class Function, class... Arguments>
  std::uint32_t call(Function function, Arguments... arguments) const {
    return call_plain(function, kFileVsan, arguments...);
  }
  template <class Function, class... Arguments>
  std::uint32_t call_plain(Function function, Arguments... arguments) const {
    return function(requester_, handle(), "TEST", "FILES", kFileWait, arguments...);
  }

 private:
  /** Writable, as the library may put it in capital letters. */
  class Name {
   public:
    explicit Name(const std::string& name) { name.copy(text_, 8); }
    char* get() { return text_[0] == '\0' ? nullptr : text_; }

   private:
    char text_[9] = {};
  };

  Connected own_;
  std::uint32_t requester_;
};

}  // namespace ficon::test
