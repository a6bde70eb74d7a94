#include "port_requests.h"

#include "mapped_ports.h"
#include "wire/port_plan.h"

namespace ficon::ctl {

std::string name_of(NumberOwner owner) {
  return owner == kLogicalPorts ? "the logical ports" : "module " + std::to_string(owner);
}

Reservation::Reservation(const std::vector<NumberRange>& ranges) {
  for (const NumberRange& range : ranges) {
    const auto at = static_cast<std::size_t>(count);
    if (at == firsts.size()) throw UsageError("more than 64 ranges");
    firsts[at] = range.first;
    lasts[at] = range.last;
    ++count;
  }
}

void ask(Session& session, const ReservationOperation& operation, NumberOwner owner,
         Reservation& ranges, const std::string& what) {
  std::array<char, wire::kReserveText + 1> text{};
  const std::uint32_t status = session.ask(
      ficon_cmi_reserve_portnum, owner == kLogicalPorts ? operation.logical : operation.of_module,
      owner, 0U, &ranges.result, &ranges.count, ranges.firsts.data(), ranges.lasts.data(),
      text.data());
  if (status == 0) return;
  const Failure failure = session.failure(status, what);
  if (text[0] == '\0') throw failure;
  throw Failure(status, failure.name(), what + ": " + text.data(), failure.hint());
}

std::set<std::uint32_t> reserved_numbers(Session& session, NumberOwner owner) {
  Reservation ranges;
  ask(session, kQuery, owner, ranges, "cannot read the reserved port numbers");
  std::set<std::uint32_t> numbers;
  for (std::size_t i = 0; i < static_cast<std::size_t>(ranges.count); ++i) {
    for (std::uint32_t n = ranges.firsts[i]; n <= ranges.lasts[i]; ++n) numbers.insert(n);
  }
  return numbers;
}

void assign_number(Session& session, if_index_t if_index, std::uint32_t number) {
  const bool none = number == wire::kNoPort;
  const std::uint32_t status = ficon_cmi_set_portnum(
      session.handle(), none ? wire::kReleasePortNumber : wire::kAssignPortNumber, if_index, number,
      session.wait());
  if (status != 0) {
    throw session.failure(status, "cannot assign the port number of " + interface_text(if_index));
  }
}

}  // namespace ficon::ctl
