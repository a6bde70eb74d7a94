/** TLV arrays in requests and replies. */
#pragma once

#include <cstdint>
#include <optional>

#include "handlers/request.h"
#include "wire/cmi_header.h"
#include "wire/tlv_type.h"

namespace ficon::emulator {

/** The TLVs of a request. The views point into the payload. */
class TlvMessage {
 public:
  struct Tlv {
    wire::TlvType type;
    ByteView value;
  };

  /** Null unless the payload is one whole, well-formed array with at least one TLV. */
  static std::optional<TlvMessage> parse(ByteView payload);

  const std::vector<Tlv>& tlvs() const { return tlvs_; }

  /** The value of the only TLV of its type, when it is exactly one record long; else null. */
  template <class Record>
  const Record* record(wire::TlvType type) const {
    const Tlv* tlv = only(type);
    return tlv == nullptr ? nullptr : whole_record<Record>(tlv->value);
  }
  const Tlv* only(wire::TlvType type) const;

 private:
  std::vector<Tlv> tlvs_;
};

/** A TLV array that grows with what is added. */
class TlvReply {
 public:
  TlvReply();
  TlvReply& add(wire::TlvType type, ByteView value);
  template <class Record>
  TlvReply& add(wire::TlvType type, const Record& record) {
    static_assert(alignof(Record) == 1);
    return add(type, {reinterpret_cast<const std::uint8_t*>(&record), sizeof(Record)});
  }
  Bytes take() { return std::move(bytes_); }

 private:
  Bytes bytes_;
};

/** The bare header of a request: whole, or as much of it as there is. */
wire::CmiHeader header_of(ByteView request);

/** The status reply of the requests whose first TLV is the bare header. */
Bytes header_status_reply(ByteView request, FcdStatus status);

}  // namespace ficon::emulator
