/** The opcodes of the requests to fcd. */
#pragma once

#include <cstdint>

namespace ficon::wire {

enum class Opcode : std::uint32_t {
  kFiconState = 7853,
  kVsanInfo = 7855,
  kPortInfo = 7856,  // also the first request of the port-map queries
  kFileInfo = 7857,
  kPortmapFcid = 7858,
  kFileOperation = 7861,
  kGetSavedFile = 7862,
  kSetSavedFile = 7863,
  kHistory = 7864,
  kVsanConfig = 7865,
  kFileChange = 7866,
  kSwapPort = 7867,
  kSetPortNumber = 7868,
  kInterfaceState = 7869,
  kLock = 7874,
  kGetHostData = 7875,
  kSetHostData = 7876,
  kPib = 7877,
  kMaxPorts = 7878,
  kBoxStatus = 7880,
  kGetNextType = 7883,
  kBindAddressToNumber = 7884,
  kReservePortNumbers = 7890,
  kSwapInterface = 7891,
  kPortNumberBinding = 7892,
  kBindAddressToInterface = 7893,
  kProhibitSettings = 7895,
  kAclDowngrade = 7896,
  kMihTimeout = 7897,
};

}  // namespace ficon::wire
