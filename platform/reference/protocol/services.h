/**
 * The reference platform's own messages: what its services ask the emulator besides fcd's
 * requests. All numbers are big-endian.
 */
#pragma once

#include "wire/byte_order.h"

namespace ficon::platform {

/** Service access points beside fcd's own; all on fcd's node. */
enum class ServiceSap : std::uint32_t {
  kFiconBase = 200,
  kFeatureManager = 201,
  kPortManager = 202,
  kChassis = 203,
  kConfiguration = 204,
};

enum class FiconBaseOpcode : std::uint32_t { kEnabledVsans = 1, kPortmap = 2 };
enum class ConfigurationOpcode : std::uint32_t {
  kStorePath = 1,
  kSaveStartup = 2,
  kSetLoggingLevel = 3,
};
enum class FeatureManagerOpcode : std::uint32_t { kEnableFeature = 1 };

/** Reply to kEnabledVsans (the request is empty): this head, then `count` be32 VSAN numbers. */
struct EnabledVsansHead {
  wire::be32 status;
  wire::be32 count;
};
static_assert(wire::is_packed<EnabledVsansHead, 8>);

/** Request of kEnableFeature. */
struct EnableFeatureRequest {
  wire::bytes<32> name;  // NUL-padded, always terminated
};
static_assert(wire::is_packed<EnableFeatureRequest, 32>);

struct EnableFeatureReply {
  wire::be32 status;  // 0 enabled now, 0x40aa0005 it already was, else refused
};
static_assert(wire::is_packed<EnableFeatureReply, 4>);

/** Reply to kStorePath (the request is empty): this head, then the path of the SQLite file. */
struct StorePathHead {
  wire::be32 status;
};
static_assert(wire::is_packed<StorePathHead, 4>);

/** Reply to kSaveStartup (the request is empty) and kSetLoggingLevel. */
struct ConfigurationReply {
  wire::be32 status;
};
static_assert(wire::is_packed<ConfigurationReply, 4>);

/** Request of kSetLoggingLevel. */
struct SetLoggingLevelRequest {
  wire::be32 level;  // 0 to 7
};
static_assert(wire::is_packed<SetLoggingLevelRequest, 4>);

}  // namespace ficon::platform
