/**
 * What can be done with the ports of the switch. Ports belong to no VSAN: such a change needs every
 * VSAN's lock to be free or the asker's own, counts in every VSAN's key counter and stands in the
 * history once.
 */
#pragma once

#include <vector>

#include "model/switch.h"
#include "wire/port_map.h"

namespace ficon::emulator {

/** What looks for a port: whatever is known of it. */
struct PortKeys {
  if_index_t if_index = 0;
  std::uint16_t port_number = kNoPort;
  std::uint16_t port_address = kNoPort;

  bool any() const { return if_index != 0 || port_number != kNoPort || port_address != kNoPort; }
};

/** The two interfaces that a swap exchanged the addresses of. */
struct SwappedInterfaces {
  if_index_t first;
  if_index_t second;
};

/** The flag byte and the reason that the daemon reports of an interface. */
struct InterfaceCondition {
  std::uint8_t flags;
  std::uint8_t reason;
};
InterfaceCondition condition_of(const platform::Port& port);
/** The state code that port maps show. */
wire::PortState state_of(const platform::Port& port);

class PortOperations {
 public:
  explicit PortOperations(Switch& of_switch) : switch_(of_switch) {}

  /** The port that all given keys agree on. */
  std::optional<PortKeys> find(const PortKeys& keys) const;
  /**
   * The next port in the order of port numbers when a number is given, or nothing; else of
   * interfaces, else of port addresses.
   */
  std::optional<PortKeys> next(const PortKeys& keys) const;

  PlanVerdict reserve(const Asker& asker, NumberOwner owner,
                      const std::vector<PortNumberRange>& ranges);
  PlanVerdict release(const Asker& asker, NumberOwner owner,
                      const std::vector<PortNumberRange>& ranges);
  FcdStatus assign(const Asker& asker, if_index_t if_index, std::uint32_t number);
  FcdStatus unassign(const Asker& asker, if_index_t if_index, std::uint32_t number);
  FcdStatus bind_address(const Asker& asker, std::uint32_t address, std::uint32_t number);
  FcdStatus swap(const Asker& asker, std::uint32_t first, std::uint32_t second,
                 SwappedInterfaces& done);

  FcdStatus set_default_prohibit(const Asker& asker, std::uint32_t value);
  FcdStatus set_acl_not_fcid(const Asker& asker, std::uint32_t value);
  FcdStatus downgrade_acl_type(const Asker& asker);

 private:
  FcdStatus check_change(const Asker& asker) const;
  void changed(const Asker& asker, Change change, std::string_view object, std::string detail);
  FcdStatus check_swappable(std::uint32_t number) const;
  PortKeys keys_of(std::uint32_t number) const;
  FcdStatus set_prohibit_setting(const Asker& asker, bool ProhibitSettings::*setting,
                                 std::uint32_t value, const char* name);

  Switch& switch_;
};

}  // namespace ficon::emulator
