/**
 * The configuration-text service's other side: what somebody asks for, and the text that comes of
 * it. Features see the calls of <platform/acfg.h> alone.
 */
#pragma once

#include <platform/acfg.h>

#include <optional>
#include <string>
#include <vector>

namespace ficon::platform {

/** One request for configuration text. */
struct TextRequest {
  std::string config_prefix;         // of the saved configuration's store
  std::string debug_prefix;          // of the debug settings' store
  std::vector<std::uint32_t> vsans;  // empty: all
  std::vector<if_index_t> interfaces;

  /** What a feature has answered with `acfg_respond`. */
  std::optional<std::string> text;

  acfg_ctx_t context() { return reinterpret_cast<acfg_ctx_t>(this); }
  acfg_req_t request() { return reinterpret_cast<acfg_req_t>(this); }
};

}  // namespace ficon::platform
