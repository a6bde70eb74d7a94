/** A switch whose saved configuration stands in a store record by record, and the command lines
 * that are made of it. */
#pragma once

#include <doctest/doctest.h>

#include <array>
#include <utility>

#include "double/fakes.h"
#include "double/format.h"

namespace ficon::test {

inline Bytes saved_key(std::uint8_t type) {
  return {type, 0, 0, 0, 0, 0, 0, 0};
}

inline Bytes vsan_key(std::uint8_t high, std::uint8_t low) {
  return {6, 0, high, low, 0, 0, 0, 0};
}

inline const Bytes kDebugKey = {2, 0, 0, 0, 0, 0, 0, 0x64};

/** Numbers, then "none" up to the size. */
inline std::vector<std::uint16_t> block_of(std::vector<std::uint16_t> numbers, std::size_t size) {
  numbers.resize(size, 512);
  return numbers;
}

struct ConfigTextWorld {
  struct Position {
    std::uint16_t number = 512;
    std::uint16_t address = 512;
  };

  ScriptedPlatform platform;
  FakeStore config;
  FakeStore debug;
  std::array<Position, 1280> table;
  std::vector<std::uint16_t> logical_defaults = block_of({}, 256);
  std::map<std::uint32_t, std::vector<std::uint16_t>> slot_defaults;  // by slot, from 1
  std::map<std::uint8_t, std::uint8_t> modules;                       // by slot, both from 0
  std::uint32_t slots = 0;
  Bytes requested_vsans = Bytes(512, 0xff);
  std::vector<if_index_t> interfaces;             // the byte in front is the type
  std::map<if_index_t, std::uint32_t> positions;  // in the table
  std::int32_t max_ports = 256;
  acfg_hdl_t handle = nullptr;  // as the service gave it out
  std::string text;

  ConfigTextWorld() {
    MAX_FICON_PORTS = max_ports;
    play_config_text(platform, "/saved", "/trace");
    platform.on.acfg_hdl_init = [this] { return open_handle(); };
    record_lines();
    answer_requests();
    answer_switch();
  }
  ~ConfigTextWorld() { MAX_FICON_PORTS = 0; }
  ConfigTextWorld(const ConfigTextWorld&) = delete;
  ConfigTextWorld& operator=(const ConfigTextWorld&) = delete;

  acfg_hdl_t open_handle() { return handle = reinterpret_cast<acfg_hdl_t>(&text); }
  acfg_ctx_t context() { return reinterpret_cast<acfg_ctx_t>(&config); }
  acfg_req_t request() { return reinterpret_cast<acfg_req_t>(&debug); }

  ConfigTextWorld& word(std::uint8_t type, std::uint32_t value) {
    config[saved_key(type)] = host32(value);
    return *this;
  }
  ConfigTextWorld& with_feature() { return word(35, 1); }
  ConfigTextWorld& logging_level(std::uint32_t level) {
    debug[kDebugKey] = host32(1) + host32(level);
    return *this;
  }
  /** Positions from `first` on get these numbers, and addresses that equal them. */
  ConfigTextWorld& assign(std::size_t first, const std::vector<std::uint16_t>& numbers) {
    for (const std::uint16_t number : numbers) table.at(first++) = {number, number};
    return *this;
  }
  ConfigTextWorld& save_table() {
    for (std::uint8_t block = 0; block < 20; ++block) {
      Bytes record;
      for (std::size_t i = 0; i < 64; ++i) {
        const Position& position = table[block * 64U + i];
        record = record + host16(position.number) + host16(position.address) + zeros(16);
      }
      config[saved_key(static_cast<std::uint8_t>(13 + block))] = record;
    }
    return *this;
  }

  /** Every line as "[element] line"; with its interface, "[element interface+indent] line". */
  const std::string& startup() {
    CHECK(generate() == 0);
    CHECK(platform.finished());
    CHECK(platform.printed().empty());
    return text;
  }
  std::uint32_t generate() {
    play_stores(platform, {{"/saved/ficon_saved_config", config}, {"/trace/ficon_debug", debug}});
    text.clear();
    return ficon_startup_acfg_gen(request(), context());
  }

 private:
  void record_lines() {
    Hooks& on = platform.on;
    on.acfg_elem_str_add_indent = [this](acfg_hdl_t to, std::uint32_t element, const char* line,
                                         std::uint32_t indent) {
      CHECK((to == handle));
      CHECK(indent == 0);
      text += formatted("[%u] %s", element, line);
      return 0U;
    };
    on.acfg_elem_ifindex_str_add_indent = [this](acfg_hdl_t to, std::uint32_t element,
                                                 if_index_t if_index, const char* line,
                                                 std::uint32_t indent) {
      CHECK((to == handle));
      text += formatted("[%u %#x+%u] %s", element, if_index, indent, line);
      return 0U;
    };
    on.acfg_elem_group_config_str_add = [this](acfg_hdl_t to, std::uint32_t group,
                                               std::uint32_t arg3, std::uint32_t arg4,
                                               const char* line) {
      CHECK((to == handle));
      text += formatted("[group %u %u %u] %s", group, arg3, arg4, line);
      return 0U;
    };
    on.acfg_respond = [this](acfg_hdl_t of, acfg_req_t to, acfg_ctx_t in) {
      CHECK((of == handle));
      CHECK((to == request()));
      CHECK((in == context()));
      return 0U;
    };
  }

  void answer_requests() {
    platform.on.acfg_req_vsan_list_get = [this](acfg_ctx_t in, std::uint8_t* bitmap) {
      CHECK((in == context()));
      CHECK(Bytes(bitmap, bitmap + 512) == zeros(512));
      std::copy(requested_vsans.begin(), requested_vsans.end(), bitmap);
      return 0U;
    };
    platform.on.acfg_req_ifindex_list_get = [this](acfg_ctx_t in, std::uint32_t* count,
                                                   if_index_t** list) {
      CHECK((in == context()));
      *count = static_cast<std::uint32_t>(interfaces.size());
      *list = handed_out(interfaces);
      return 0U;
    };
  }

  void answer_switch() {
    Hooks& on = platform.on;
    on.ficon_get_max_ficon_ports = [this] { return MAX_FICON_PORTS = max_ports; };
    on.ficon_port_to_pn_init = [this](std::uint32_t entries, ficon_port_pn_entry_t* out,
                                      std::uint32_t, const std::uint16_t*) {
      for (std::uint32_t i = 0; i < entries; ++i) {
        out[i].port_number = table.at(i).number;
        out[i].port_address = table.at(i).address;
      }
      return 0U;
    };
    on.ficon_get_default_pn = [this](std::uint32_t slot, std::uint32_t logical,
                                     std::uint16_t* defaults) {
      CHECK((logical == 0 || slot == 0));
      const auto& numbers = logical != 0 ? logical_defaults : slot_defaults.at(slot);
      std::copy(numbers.begin(), numbers.end(), defaults);
      return 0U;
    };
    on.get_platform_info = [this](platform_info_t* info) {
      info->slot_count = slots;
      return 0U;
    };
    on.ficonm_platform_slot_to_lc_b0 = [this](std::uint8_t slot, std::uint8_t* lc) {
      const auto found = modules.find(slot);
      if (found == modules.end()) return 1U;
      *lc = found->second;
      return 0U;
    };
    on.if_index_get_type = [](if_index_t if_index, std::uint32_t* type) {
      *type = if_index >> 24;
      return 0U;
    };
    on.ficon_pmap_get_if_to_index_with2pmaps =
        [this](if_index_t if_index, std::uint32_t* entry, const std::uint32_t*,
               const ficon_port_pn_entry_t*, std::uint32_t physical) {
          CHECK(physical == (if_index >> 24 == 1 ? 1U : 0U));
          const auto found = positions.find(if_index);
          if (found == positions.end()) return 1U;
          *entry = found->second;
          return 0U;
        };
  }
};

}  // namespace ficon::test
