/** The plan of port numbers in the daemon: what is reserved for whom, and what interfaces have. */
#pragma once

#include <array>
#include <set>
#include <string>
#include <vector>

#include "port_plan.h"
#include "session.h"
#include "wire/port_numbers.h"

namespace ficon::ctl {

std::string name_of(NumberOwner owner);

/** What a reservation carries. */
struct Reservation {
  std::int32_t count = 0;    // of ranges
  std::uint32_t result = 0;  // of numbers, in the answer to a query
  std::array<std::uint32_t, wire::kReservedRanges> firsts{};
  std::array<std::uint32_t, wire::kReservedRanges> lasts{};

  Reservation() = default;
  /** A UsageError for more ranges than one request holds. */
  explicit Reservation(const std::vector<NumberRange>& ranges);
};

/** The operations for a module, and for the logical ports. */
struct ReservationOperation {
  std::uint8_t of_module;
  std::uint8_t logical;
};
/** In place of those that the owner has. */
inline constexpr ReservationOperation kReserve{wire::kReserveForModule, wire::kReserveLogical};
/** No ranges: all. */
inline constexpr ReservationOperation kRelease{wire::kReleaseOfModule, wire::kReleaseLogical};
inline constexpr ReservationOperation kQuery{wire::kReservedForModule, wire::kReservedLogical};

/** A Failure begins with `what` and ends with the daemon's own words. */
void ask(Session& session, const ReservationOperation& operation, NumberOwner owner,
         Reservation& ranges, const std::string& what);

/** Of more than 64 ranges, those of the first 64. */
std::set<std::uint32_t> reserved_numbers(Session& session, NumberOwner owner);

/** Gives an interface a port number; wire::kNoPort takes the one that it has. */
void assign_number(Session& session, if_index_t if_index, std::uint32_t number);

}  // namespace ficon::ctl
