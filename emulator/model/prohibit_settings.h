/** Switch-wide settings of port prohibiting. */
#pragma once

namespace ficon::emulator {

struct ProhibitSettings {
  bool prohibited_by_default = false;  // new files begin with every pair of ports prohibited
  bool acl_not_fcid = false;           // access lists are built of ports instead of FCIDs

  bool operator==(const ProhibitSettings&) const = default;
};

}  // namespace ficon::emulator
