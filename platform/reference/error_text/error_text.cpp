/** The text of an error: fcd's and the library's statuses, and Linux's numbers below them. */
#include <platform/diagnostics.h>

#include <cstdio>
#include <cstring>

#include "wire/fcd_status.h"
#include "wire/status_text.h"

namespace {

/** Statuses of every family have the upper half set; Linux's error numbers do not. */
constexpr std::uint32_t kLargestErrorNumber = 4095;

}  // namespace

const char* syserr2str(uint32_t code) {
  if (const auto* text = ficon::find_fcd_status(code)) return text->sentence;
  if (const auto* text = ficon::find_status_text(code)) return text->sentence;
  const char* linux_text =
      code <= kLargestErrorNumber ? strerrordesc_np(static_cast<int>(code)) : nullptr;
  if (linux_text != nullptr) return linux_text;
  static thread_local char unknown[32];
  std::snprintf(unknown, sizeof unknown, "status 0x%08x", code);
  return unknown;
}
