/** Status codes: what the library returns itself and what it tells apart in replies. */
#pragma once

#include <cstdint>

namespace ficon {

using Status = std::uint32_t;

namespace status {

inline constexpr Status kOk = 0;
inline constexpr Status kNoMemory = 1;  // the plain value, where the interface says so
inline constexpr Status kNoReply = 3;   // no payload, or no header TLV in it
inline constexpr Status kSendFailed = 0xffffffff;

inline constexpr Status kReceiveFailed = 0x40850000;
inline constexpr Status kInvalidPayload = 0x40850003;
inline constexpr Status kNotEnabled = 0x40850004;
inline constexpr Status kNoPayload = 0x40850008;
inline constexpr Status kNoNextPort = 0x4085000a;
inline constexpr Status kAllocationFailed = 0x40850010;
inline constexpr Status kLockUnavailable = 0x40850012;
inline constexpr Status kLockResetFailed = 0x40850013;
inline constexpr Status kReservedName = 0x40850017;
inline constexpr Status kPortAddressTooLarge = 0x40850018;
inline constexpr Status kNameBeginsWithSpace = 0x4085001d;
inline constexpr Status kNameCharacter = 0x4085001e;
inline constexpr Status kNameTooLong = 0x4085001f;
inline constexpr Status kConversionFailed = 0x40850020;
inline constexpr Status kSamePort = 0x40850025;
inline constexpr Status kDescriptionCharacter = 0x4085002c;
inline constexpr Status kTimedOut = 0x40850043;
inline constexpr Status kAutoCreatedPortChannel = 0x40850050;

inline constexpr Status kLockBusy = 0x40890029;
inline constexpr Status kLockAlreadyHeld = 0x40890036;

inline constexpr Status kFeatureAlreadyEnabled = 0x40aa0005;
inline constexpr Status kEndOfStore = 0x40480003;

}  // namespace status
}  // namespace ficon
