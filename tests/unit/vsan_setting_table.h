/**
 * Every VSAN setting as a row: its operation, the bytes that it alone puts into the record, and its
 * two forms. Offsets typed by hand from the record's description.
 */
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "double/scripted_platform.h"

namespace ficon::test {

inline constexpr std::uint32_t kSettingRequester = 0x01020304;
inline constexpr std::uint32_t kSettingVsan = 0x11223344;
inline constexpr std::uint32_t kSettingWait = 5;

struct Field {
  std::size_t offset;  // in the 1347-byte record
  Bytes bytes;
};

struct VsanSetting {
  std::string name;
  std::uint32_t operation;
  std::vector<Field> fields;
  std::function<std::uint32_t(mts_handle_t, mts_msg_ref_t*)> nonblock;  // empty: there is none
  std::function<std::uint32_t(mts_handle_t)> blocking;

  /** The whole request: that of clock alert mode with its own operation and fields. */
  Golden request() const;
};

const std::vector<VsanSetting>& vsan_settings();

}  // namespace ficon::test
