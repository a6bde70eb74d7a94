/** The TLV types of requests and replies. */
#pragma once

#include <cstdint>

namespace ficon::wire {

enum class TlvType : std::uint16_t {
  kPortInfo = 0,
  kVsanConfig = 2,
  kFileRequest = 6,
  kPortName = 7,
  kPortAddressRange = 8,
  kPortmapFcid = 9,
  kFileInfo = 11,
  kHeader = 12,
  kPortInfoRequest = 13,
  kSetPortNumber = 14,
  kInterfaceState = 15,
  kFileData = 17,
  kHistoryEntries = 18,
  kHistoryRequest = 19,
  kPibRequest = 20,
  kPibRecords = 21,
  kPortBlocked = 22,
  kProhibitBitset = 23,
  kFileHeader = 25,
  kAddressToNumberMap = 26,
  kNumberToInterfaceMap = 27,
  kReservePortNumbers = 28,
  kPortNumberBinding = 29,
  kPortNumberRange = 30,
  kPortRecords = 31,
  kInterfaceRange = 32,
};

}  // namespace ficon::wire
