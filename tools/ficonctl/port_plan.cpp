#include "port_plan.h"

#include <platform/ficon_base.h>

#include <algorithm>

#include "interface_index/interface_index.h"

namespace ficon::ctl {

std::vector<std::uint32_t> PortPlan::shown_numbers(NumberOwner owner) const {
  const auto [first, count] = positions_of(owner);
  const auto* begin = number_at.begin() + first;
  return {begin, std::find(begin, begin + count, wire::kNoPort)};
}

std::vector<std::uint32_t> PortPlan::all_numbers(NumberOwner owner) const {
  std::vector<std::uint32_t> numbers;
  const auto found = reserved.find(owner);
  if (found == reserved.end()) return numbers;
  std::set<std::uint32_t> without_position = found->second;
  const auto [first, count] = positions_of(owner);
  for (std::uint32_t p = first; p < first + count; ++p) {
    if (without_position.erase(number_at[p]) != 0) numbers.push_back(number_at[p]);
  }
  numbers.insert(numbers.end(), without_position.begin(), without_position.end());
  return numbers;
}

bool PortPlan::is_reserved(NumberOwner owner, std::uint32_t number) const {
  const auto found = reserved.find(owner);
  return found != reserved.end() && found->second.contains(number);
}

std::optional<std::uint32_t> PortPlan::number_of(if_index_t if_index) const {
  if (const auto position = position_of(if_index)) {
    const std::uint32_t number = number_at[*position];
    return number == wire::kNoPort ? std::nullopt : std::optional(number);
  }
  for (const auto& [number, bound] : logical) {
    if (bound == if_index) return number;
  }
  return std::nullopt;
}

std::optional<std::uint32_t> PortPlan::address_of(std::uint32_t number) const {
  const auto* found = std::ranges::find(number_of_address, number);
  if (found == number_of_address.end()) return std::nullopt;
  return static_cast<std::uint32_t>(found - number_of_address.begin());
}

void PortPlan::reserve(NumberOwner owner, const std::vector<std::uint32_t>& numbers) {
  const auto [first, count] = positions_of(owner);
  std::fill_n(number_at.begin() + first, count, wire::kNoPort);
  std::copy_n(numbers.begin(), std::min<std::size_t>(numbers.size(), count),
              number_at.begin() + first);
  reserved.erase(owner);
  if (!numbers.empty()) reserved[owner] = {numbers.begin(), numbers.end()};
  if (owner == kLogicalPorts) {
    std::erase_if(logical, [&](const auto& bound) { return !is_reserved(owner, bound.first); });
  }
}

void PortPlan::bind(if_index_t if_index, std::uint32_t number) {
  unbind(if_index);
  logical[number] = if_index;
}

void PortPlan::unbind(if_index_t if_index) {
  std::erase_if(logical, [&](const auto& bound) { return bound.second == if_index; });
}

void PortPlan::set_address(std::uint32_t number, std::uint32_t address) {
  std::ranges::replace(number_of_address, number, wire::kNoPort);
  if (address < number_of_address.size()) number_of_address[address] = number;
}

std::optional<std::uint32_t> position_of(if_index_t if_index) {
  constexpr std::uint32_t kPhysical = 1;
  const auto interface = platform::interface_of(if_index);
  std::uint32_t position = 0;
  if (!interface || interface->type != platform::InterfaceType::kFibreChannel) return std::nullopt;
  if (ficon_pmap_get_if_to_index_with2pmaps(if_index, &position, nullptr, nullptr, kPhysical)) {
    return std::nullopt;
  }
  return position;
}

std::vector<NumberRange> ranges_of(const std::vector<std::uint32_t>& numbers) {
  std::vector<NumberRange> ranges;
  for (const std::uint32_t number : numbers) {
    if (!ranges.empty() && ranges.back().last + 1 == number) {
      ranges.back().last = number;
    } else {
      ranges.push_back({number, number});
    }
  }
  return ranges;
}

}  // namespace ficon::ctl
