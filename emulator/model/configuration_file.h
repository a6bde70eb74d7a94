/**
 * A configuration file: what a director's ports are to be, by port address. The active
 * configuration is one too. Plain values and the rules of a single file; who may edit which file
 * is the business of `files.h`.
 */
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/port_set.h"
#include "wire/fcd_status.h"
#include "wire/port_plan.h"

namespace ficon::emulator {

inline constexpr std::uint32_t kLastUsablePortAddress = 0xfd;
using wire::kControlUnitPort;

/** kDone for an address that can be blocked, named and prohibited. */
FcdStatus check_port_address(std::uint32_t address);

/** EBCDIC, padded with blanks (0x40). */
using PortName = std::array<std::uint8_t, 24>;
using FileHeader = std::array<std::uint8_t, 128>;

inline constexpr std::uint8_t kEbcdicBlank = 0x40;
constexpr PortName no_port_name() {
  PortName name{};
  name.fill(kEbcdicBlank);
  return name;
}

struct PortSettings {
  bool blocked = false;
  PortName name = no_port_name();
  PortSet prohibited;  // the port addresses that this one may not talk to

  bool operator==(const PortSettings&) const = default;
};

/** How a prohibit mask meets the one that is there. */
enum class ProhibitChange : std::uint32_t { kReplace = 0, kAdd = 1, kRemove = 2 };

class ConfigurationFile {
 public:
  const PortSettings& port(std::uint32_t address) const { return ports_[address]; }

  FcdStatus set_blocked(std::uint32_t address, std::uint8_t value);
  FcdStatus set_name(std::uint32_t address, const PortName& name);
  /** Both sides of every pair are kept alike: a prohibit is symmetric. */
  FcdStatus change_prohibited(std::uint32_t address, std::uint32_t how, const PortSet& mask);
  /** Beside what is prohibited already. */
  void prohibit_pairs_of(const PortSet& usable_ports);

  /** Puts back stored settings of one port; no rule is asked. */
  void restore_port(std::uint32_t address, const PortSettings& settings) {
    ports_[address] = settings;
  }
  /** Whether every prohibit is there on both sides and concerns usable ports only. */
  bool is_consistent() const;

  FileHeader header{};
  std::vector<std::uint8_t> notes;  // uploaded with the file, kept, and not looked into

  bool operator==(const ConfigurationFile&) const = default;

 private:
  std::array<PortSettings, kPortAddresses> ports_;
};

/** EBCDIC, padded with blanks (0x40). */
using FileName = std::array<std::uint8_t, 8>;

/** "IPL", which reads the same in every code page on offer. */
inline constexpr FileName kIplFile{0xc9, 0xd7, 0xd3, 0x40, 0x40, 0x40, 0x40, 0x40};

/** In place of a file's name: the active configuration. */
inline constexpr FileName kActiveConfiguration{};

/** 1 to 8 capital letters, digits, hyphens, underscores and blanks, the first no blank. */
bool is_file_name(const FileName& name);
/** In letters: every character that a name may hold reads the same in every code page. */
std::string readable(const FileName& name);
/** Back from letters; null when they make no name. */
std::optional<FileName> file_name_from(std::string_view letters);
/** The name under which the active configuration or a file of a VSAN is stored. */
std::string file_object(std::uint16_t vsan, const FileName& name);

/** What a VSAN keeps: the active configuration and the named files, IPL always among them. */
struct ConfigurationFiles {
  ConfigurationFile active;
  std::map<FileName, ConfigurationFile> named{{kIplFile, {}}};
};

}  // namespace ficon::emulator
