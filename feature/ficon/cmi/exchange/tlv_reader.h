/** Walks the TLVs of a reply in place. */
#pragma once

#include <platform/tlv_array.h>

#include "exchange/tlv_writer.h"
#include "wire/status.h"
#include "wire/tlv_type.h"

namespace ficon {

struct Tlv {
  std::uint16_t type;
  std::uint16_t length;
  void* value;

  bool is(wire::TlvType wanted) const { return type == static_cast<std::uint16_t>(wanted); }

  /** The value as a record; what a short value lacks reads as zero. */
  template <class Record>
  Record read() const {
    Record record{};
    __builtin_memcpy(&record, value, length < sizeof record ? length : sizeof record);
    return record;
  }
};

class TlvReader {
 public:
  explicit TlvReader(const void* array)
      : array_(array), count_(tlv_aligned_array_get_num_tlvs(array, kTlvAlignment)) {}

  bool empty() const { return count_ <= 0; }

  /** The next TLV; false at the end and on error, which `status` tells apart. */
  bool next(Tlv& tlv) {
    if (status_ != 0 || index_ >= count_) return false;
    ++index_;
    status_ = tlv_aligned_array_get_next_tlv(array_, &tlv.type, &tlv.length, &tlv.value,
                                             kTlvAlignment, &cursor_);
    return status_ == 0;
  }

  /** The next TLV, asked for whatever the count says: for replies that must begin with so many. */
  Status read_next(Tlv& tlv) {
    status_ = tlv_aligned_array_get_next_tlv(array_, &tlv.type, &tlv.length, &tlv.value,
                                             kTlvAlignment, &cursor_);
    return status_;
  }

  /** The next TLV of a type; false when there is none or the walk failed. */
  bool find(wire::TlvType type, Tlv& tlv) {
    while (next(tlv)) {
      if (tlv.is(type)) return true;
    }
    return false;
  }

  Status status() const { return status_; }

  /** Back to the first TLV: the second pass of a parser that judges before it copies. */
  void rewind() {
    index_ = 0;
    cursor_ = 0;
    status_ = 0;
  }

 private:
  const void* array_;
  std::int32_t count_;
  std::int32_t index_ = 0;
  std::uint32_t cursor_ = 0;
  Status status_ = 0;
};

/** One pass: `visit(tlv)` gives a status, and the first nonzero one ends the walk. */
template <class Visit>
Status for_each_tlv(TlvReader& reader, Visit visit) {
  for (Tlv tlv{}; reader.next(tlv);) {
    if (const Status status = visit(tlv)) return status;
  }
  return reader.status();
}

}  // namespace ficon
