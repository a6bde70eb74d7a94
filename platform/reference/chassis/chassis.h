/**
 * A chassis: what stands in its slots and what its ports are, as far as management sees it. Plain
 * state; the emulator changes it while clients look, and every process starts from a description.
 */
#pragma once

#include <ficon_cmi.h>

#include <bitset>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace ficon::platform {

inline constexpr std::uint32_t kDefaultFiconPorts = 256;
inline constexpr std::uint16_t kLastVsan = 4093;
using VsanSet = std::bitset<4096>;

/** The port manager's modes, in its numbers. */
enum class PortMode : std::uint32_t {
  kAuto = 1,
  kE = 2,   // towards another switch
  kF = 4,   // towards a host or a control unit
  kTE = 8,  // towards another switch, trunking
  kSD = 16,
  kFx = 32,  // F, or a loop of devices
};

enum class PortCondition : std::uint8_t { kUp, kOffline, kAdminDown, kFailed };

/** The port manager's transceiver status: 0 is usable. */
enum class Transceiver : std::uint32_t { kUsable = 0, kAbsent = 1, kUnsupported = 2 };

struct Port {
  PortMode mode = PortMode::kF;
  PortCondition condition = PortCondition::kOffline;
  Transceiver transceiver = Transceiver::kUsable;
  std::uint16_t vsan = 1;
  VsanSet trunk_vsans;        // a port trunks when there are any
  bool auto_created = false;  // port channels that the system made

  bool trunking() const { return trunk_vsans.any(); }
};

struct Module {
  std::uint32_t number;  // from 1; decides the positions of its ports
  std::uint32_t slot;    // from 1
  std::string type;
  std::vector<Port> ports;
};

struct Chassis {
  std::string name = "switch";
  std::string software_version = "1.0";
  std::string model = "unknown";  // it and its serial number identify the hardware
  std::string serial = "0";
  std::uint32_t slots = 1;
  std::uint32_t ficon_ports = kDefaultFiconPorts;  // port numbers from 0
  std::vector<Module> modules;                     // by number
  std::map<if_index_t, Port> logical_ports;

  const Module* module_in_slot(std::uint32_t slot) const;
  const Module* module(std::uint32_t number) const;
  /** Null for an interface that this chassis does not have. */
  const Port* port(if_index_t if_index) const;
  Port* port(if_index_t if_index);
  /** Every interface, in the order of the indexes. */
  std::vector<if_index_t> interfaces() const;
};

/**
 * The port numbers that a module's ports have unless told otherwise: consecutive through the
 * modules as long as addresses last; empty beyond.
 */
std::vector<std::uint16_t> default_port_numbers(const Chassis& chassis, const Module& module);
/** The same for the logical ports, which share the ten addresses below the control unit port's. */
std::vector<std::uint16_t> default_logical_port_numbers();

}  // namespace ficon::platform
