/**
 * Collects the lines of a feature under its elements and renders them: elements in the order of
 * their dependencies and, among those free to come, of their value; interface lines under their
 * interface; group lines last.
 */
#include <platform/acfg.h>
#include <platform/port_manager.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <utility>

#include "acfg/text_service.h"

using ficon::platform::TextRequest;

namespace {

constexpr std::uint32_t kUnknownElement = 22;  // EINVAL
constexpr std::uint32_t kCycle = 35;           // EDEADLK
constexpr std::size_t kIndent = 2;
constexpr std::uint32_t kVsans = 4096;

struct Element {
  std::uint32_t feature;
  std::uint32_t number;
  std::uint32_t value;
  std::string lines;
  std::vector<std::pair<if_index_t, std::string>> interfaces;  // in the order of their first lines
  std::map<if_index_t, std::size_t> place_of;                  // in `interfaces`
  std::vector<std::pair<std::uint32_t, std::uint32_t>> after;  // feature and element
};

void append(std::string& lines, const char* text, std::uint32_t indent) {
  lines.append(indent * kIndent, ' ').append(text);
}

std::string heading(if_index_t if_index) {
  char name[64];
  snprintf_if_index(name, sizeof name, if_index);
  return std::string("interface ") + name + "\n";
}

}  // namespace

struct acfg_hdl {
  std::vector<Element> elements;
  std::string groups;

  Element* find(std::uint32_t number) {
    const auto found = std::ranges::find(elements, number, &Element::number);
    return found == elements.end() ? nullptr : &*found;
  }
  bool has(const std::pair<std::uint32_t, std::uint32_t>& name) const {
    return std::ranges::any_of(elements, [&](const Element& e) {
      return e.feature == name.first && e.number == name.second;
    });
  }
  /** Elements of other features that are not rendered here are always out of the way. */
  bool is_free(const Element& element, const std::vector<const Element*>& placed) const {
    return std::ranges::all_of(element.after, [&](const auto& name) {
      return !has(name) || std::ranges::any_of(placed, [&](const Element* e) {
        return e->feature == name.first && e->number == name.second;
      });
    });
  }
  /** Empty when the dependencies go round in a circle. */
  std::vector<const Element*> ordered() const;
};

std::vector<const Element*> acfg_hdl::ordered() const {
  std::vector<const Element*> placed;
  while (placed.size() < elements.size()) {
    const Element* next = nullptr;
    for (const Element& element : elements) {
      if (std::ranges::find(placed, &element) != placed.end()) continue;
      if (!is_free(element, placed)) continue;
      if (next == nullptr || element.value < next->value) next = &element;
    }
    if (next == nullptr) return {};
    placed.push_back(next);
  }
  return placed;
}

namespace {

std::string render(const Element& element) {
  std::string text = element.lines;
  for (const auto& [if_index, lines] : element.interfaces) text += heading(if_index) + lines;
  return text;
}

TextRequest& asked(acfg_ctx_t context) {
  return *reinterpret_cast<TextRequest*>(context);
}

}  // namespace

acfg_hdl_t acfg_hdl_init(void) {
  return new acfg_hdl;
}

const char* acfg_startup_cfg_uri_prefix_get(acfg_ctx_t context) {
  return asked(context).config_prefix.c_str();
}

const char* acfg_startup_debug_cfg_uri_prefix_get(acfg_ctx_t context) {
  return asked(context).debug_prefix.c_str();
}

uint32_t acfg_req_vsan_list_get(acfg_ctx_t context, uint8_t* bitmap) {
  const auto add = [&](std::uint32_t vsan) {
    bitmap[vsan / 8] |= static_cast<std::uint8_t>(0x80 >> (vsan % 8));
  };
  if (asked(context).vsans.empty()) std::memset(bitmap, 0xff, kVsans / 8);
  for (const std::uint32_t vsan : asked(context).vsans) {
    if (vsan < kVsans) add(vsan);
  }
  return 0;
}

uint32_t acfg_req_ifindex_list_get(acfg_ctx_t context, uint32_t* count, if_index_t** list) {
  const std::vector<if_index_t>& interfaces = asked(context).interfaces;
  *count = 0;
  *list = nullptr;
  if (interfaces.empty()) return 0;
  *list = static_cast<if_index_t*>(std::malloc(interfaces.size() * sizeof(if_index_t)));
  if (*list == nullptr) return 12;  // ENOMEM
  std::ranges::copy(interfaces, *list);
  *count = static_cast<std::uint32_t>(interfaces.size());
  return 0;
}

uint32_t acfg_elem_add(acfg_hdl_t handle, uint32_t feature, uint32_t element, uint32_t value) {
  handle->elements.push_back({feature, element, value, {}, {}, {}, {}});
  return 0;
}

uint32_t acfg_elem_property_set(acfg_hdl_t handle, uint32_t element, uint32_t /*property*/) {
  return handle->find(element) == nullptr ? kUnknownElement : 0;
}

uint32_t acfg_elem_dependency_add(acfg_hdl_t handle, uint32_t element, uint32_t x, uint32_t y) {
  Element* found = handle->find(element);
  if (found == nullptr) return kUnknownElement;
  found->after.emplace_back(x, y);
  return 0;
}

uint32_t acfg_elem_str_add_indent(acfg_hdl_t handle, uint32_t element, const char* text,
                                  uint32_t indent) {
  Element* found = handle->find(element);
  if (found == nullptr) return kUnknownElement;
  append(found->lines, text, indent);
  return 0;
}

uint32_t acfg_elem_ifindex_str_add_indent(acfg_hdl_t handle, uint32_t element, if_index_t if_index,
                                          const char* text, uint32_t indent) {
  Element* found = handle->find(element);
  if (found == nullptr) return kUnknownElement;
  const auto [place, is_new] = found->place_of.try_emplace(if_index, found->interfaces.size());
  if (is_new) found->interfaces.emplace_back(if_index, "");
  append(found->interfaces[place->second].second, text, indent);
  return 0;
}

uint32_t acfg_elem_group_config_str_add(acfg_hdl_t handle, uint32_t /*group*/, uint32_t /*arg3*/,
                                        uint32_t /*arg4*/, const char* text) {
  handle->groups += text;
  return 0;
}

uint32_t acfg_respond(acfg_hdl_t handle, acfg_req_t request, acfg_ctx_t /*context*/) {
  const std::unique_ptr<acfg_hdl> ended(handle);
  const auto ordered = handle->ordered();
  if (ordered.size() != handle->elements.size()) {
    std::fprintf(stderr, "acfg: the elements' dependencies go round in a circle\n");
    return kCycle;
  }
  std::string text;
  for (const Element* element : ordered) text += render(*element);
  reinterpret_cast<TextRequest*>(request)->text = text + handle->groups;
  return 0;
}
