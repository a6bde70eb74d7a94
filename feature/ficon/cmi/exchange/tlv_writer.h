/** Builds the TLV array of a request; the first failed add is kept and ends the request. */
#pragma once

#include <platform/tlv_array.h>

#include "exchange/send.h"
#include "wire/tlv_type.h"

namespace ficon {

inline constexpr std::uint32_t kTlvAlignment = 1;

/** Writes into a zeroed buffer of `capacity` bytes that its owner keeps. */
class TlvWriter {
 public:
  TlvWriter(void* zeroed_buffer, std::uint32_t capacity)
      : array_(zeroed_buffer), capacity_(capacity) {}

  TlvWriter& add(wire::TlvType type, const void* value, std::uint16_t length) {
    if (status_ == 0) {
      status_ = tlv_aligned_array_add_tlv(array_, capacity_, static_cast<std::uint16_t>(type),
                                          length, value, kTlvAlignment);
    }
    return *this;
  }
  template <class Record>
  TlvWriter& add(wire::TlvType type, const Record& record) {
    static_assert(alignof(Record) == 1 && sizeof(Record) <= 0xffff);
    return add(type, &record, sizeof record);
  }

  Status status() const { return status_; }

  /** Sends what was added, unless an add failed: then its status is the result. */
  Status send(const Caller& caller, wire::Opcode opcode, mts_msg_ref_t* message) const {
    if (status_ != 0) return status_;
    return static_cast<Status>(send_to_fcd(caller.handle, opcode, array_, size(), message));
  }

  const void* array() const { return array_; }
  std::uint32_t size() const { return tlv_aligned_array_size_get(array_, kTlvAlignment); }

 private:
  void* array_;
  std::uint32_t capacity_;
  Status status_ = 0;
};

/** A writer with a buffer of its own. */
template <std::uint32_t Capacity>
class TlvArray : public TlvWriter {
 public:
  TlvArray() : TlvWriter(buffer_, Capacity) {}
  TlvArray(const TlvArray&) = delete;
  TlvArray& operator=(const TlvArray&) = delete;

 private:
  std::uint8_t buffer_[Capacity] = {};
};

inline constexpr std::uint32_t kRequestCapacity = 2048;
using RequestTlvs = TlvArray<kRequestCapacity>;

}  // namespace ficon
