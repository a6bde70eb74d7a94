/** Switch-wide settings of port prohibiting. */
#pragma once

namespace ficon::emulator {

struct ProhibitSettings {
  bool prohibited_by_default = false;  // new files prohibit every pair that access lists can name
  bool acl_not_fcid = false;  // access lists can name all ports, not only those with an FCID

  bool operator==(const ProhibitSettings&) const = default;
};

}  // namespace ficon::emulator
