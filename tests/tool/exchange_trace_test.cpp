#include "exchange_trace.h"

#include <doctest/doctest.h>

#include <cstring>
#include <vector>

using namespace ficon::ctl;

namespace {

using Bytes = std::vector<std::uint8_t>;

ficon_mts_event_t reply(std::uint32_t opcode, const Bytes& payload) {
  ficon_mts_event_t event{};
  event.reply = 1;
  event.opcode = opcode;
  event.length = static_cast<std::uint32_t>(payload.size());
  event.payload = payload.data();
  return event;
}

/** Statuses stand in the order of the machine. */
void put_status(Bytes& bytes, std::size_t offset, std::uint32_t status) {
  std::memcpy(bytes.data() + offset, &status, sizeof status);
}

/** An array with one header TLV (type 12): 4 bytes of size, 2 of type, 2 of length, 128 of value.
 */
Bytes header_array() {
  Bytes bytes(136);
  bytes[3] = 136;
  bytes[5] = 12;
  bytes[7] = 128;
  return bytes;
}

}  // namespace

TEST_CASE("the status of a lock reply stands behind VSAN and operation") {
  Bytes lock(18);
  put_status(lock, 5, 0x40890029);
  CHECK(status_of_reply(reply(7874, lock)) == 0x40890029);
  lock.pop_back();
  CHECK_FALSE(status_of_reply(reply(7874, lock)).has_value());
}

TEST_CASE("the status of a FICON state reply stands in its header") {
  Bytes header(128);
  put_status(header, 120, 0x11223344);
  CHECK(status_of_reply(reply(7853, header)) == 0x11223344);
}

TEST_CASE("the status of a TLV array stands at the end of its header TLV") {
  Bytes array = header_array();
  put_status(array, 8 + 124, 0x40890006);
  CHECK(status_of_reply(reply(7855, array)) == 0x40890006);
}

TEST_CASE("no status is made up for a reply that has none to be found") {
  CHECK_FALSE(status_of_reply(reply(7855, {})).has_value());
  CHECK_FALSE(status_of_reply(reply(7880, Bytes(148))).has_value());
  Bytes other_type = header_array();
  other_type[5] = 2;
  CHECK_FALSE(status_of_reply(reply(7855, other_type)).has_value());
  Bytes short_header = header_array();
  short_header[7] = 100;
  CHECK_FALSE(status_of_reply(reply(7855, short_header)).has_value());
  Bytes overlong = header_array();
  overlong[7] = 200;
  CHECK_FALSE(status_of_reply(reply(7855, overlong)).has_value());
}
