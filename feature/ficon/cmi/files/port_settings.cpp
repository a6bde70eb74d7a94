/** Ports blocked, named and prohibited in a file: the senders and their ranges. */
#include <platform/mts.h>

#include "exchange/allocation.h"
#include "exchange/console.h"
#include "exchange/tlv_reader.h"
#include "files/file_name.h"
#include "files/file_request.h"
#include "wire/port_settings.h"

using namespace ficon;

namespace {

/** The result of a range whose entries found no memory. */
constexpr Status kNoEntries = 0xffffffff;

/** What every sender of this family is given besides its entries. */
struct FileChange {
  Caller caller;
  std::uint32_t vsan;
  char* file_name;
  const std::uint32_t* file_key;
  bool is_ascii;
  std::uint32_t codepage;
};

/** The request record with the file's name in it, as the first TLV. */
Status begin_change(TlvWriter& tlvs, const FileChange& change, wire::FileOperation operation) {
  wire::FileRequest record = file_request(change.caller, operation, change.vsan);
  put_key(record.file_key, change.file_key);
  if (change.file_name != nullptr) {
    if (const Status refused =
            prepare_name(change.is_ascii, change.codepage, change.file_name, &record.file_name)) {
      return refused;
    }
  }
  return tlvs.add(wire::TlvType::kFileRequest, record).status();
}

wire::PortBlockedEntry to_wire(const ficon_cmi_port_blocked_entry_t& entry) {
  wire::PortBlockedEntry record{};
  record.port_address.set(entry.port_address);
  record.blocked = entry.blocked;
  return record;
}

wire::ProhibitEntry to_wire(const ficon_cmi_prohibit_entry_t& entry) {
  wire::ProhibitEntry record{};
  record.port_address.set(entry.port_address);
  record.common_value.set(entry.common_value);
  __builtin_memcpy(record.bitset.raw, entry.bitset, sizeof entry.bitset);
  return record;
}

/** The name as it is, or converted into a copy: the caller's entry stays as it was. */
Status to_wire(const ficon_cmi_port_name_entry_t& entry, const FileChange& change,
               wire::PortNameEntry* record) {
  record->port_address.set(entry.port_address);
  if (change.is_ascii) {
    return convert_ascii_portname_to_ebcdic(change.codepage, entry.port_name,
                                            record->port_name.raw);
  }
  __builtin_memcpy(record->port_name.raw, entry.port_name, sizeof record->port_name.raw);
  record->terminator = static_cast<std::uint8_t>(entry.port_name[sizeof record->port_name.raw]);
  return status::kOk;
}

/** What the senders differ in besides their records. */
struct Setting {
  wire::FileOperation operation;
  wire::TlvType entry;
};

/** Sends the request record and, behind it, what `fill(i, record)` makes of entry i, in order. */
template <class Record, class Fill>
Status send_entries(TlvWriter& tlvs, const FileChange& change, Setting setting, std::uint32_t count,
                    Fill fill, mts_msg_ref_t* message) {
  if (const Status refused = begin_change(tlvs, change, setting.operation)) return refused;
  for (std::uint32_t i = 0; i < count; ++i) {
    Record record{};
    if (const Status refused = fill(i, &record)) return refused;
    if (const Status full = tlvs.add(setting.entry, record).status()) return full;
  }
  return tlvs.send(change.caller, wire::Opcode::kFileChange, message);
}

/** Room for `count` elements, or null: also where that many cannot be counted. */
template <class Entry>
Entry* allocate_entries(__tevrak_mem_type_t type, std::uint32_t count, int line) {
  std::size_t size = 0;
  if (__builtin_mul_overflow(std::size_t{count}, sizeof(Entry), &size)) size = SIZE_MAX;
  return static_cast<Entry*>(allocate(type, size, line));
}

}  // namespace

uint32_t ficon_cmi_file_set_port_blocked_portaddr_nonblock(
    uint32_t requester, mts_handle_t handle, const char* word_a, const char* word_b, uint32_t wait,
    uint32_t vsan, char* file_name, const uint32_t* file_key,
    const ficon_cmi_port_blocked_entry_t* entries, uint32_t count, uint32_t convert,
    uint32_t codepage, mts_msg_ref_t* msg) {
  const FileChange change{{requester, handle, word_a, word_b, wait},
                          vsan,
                          file_name,
                          file_key,
                          convert == kConvert,
                          codepage};
  TlvArray<8096> tlvs;
  const auto fill = [&](std::uint32_t i, wire::PortBlockedEntry* record) {
    *record = to_wire(entries[i]);
    return status::kOk;
  };
  return send_entries<wire::PortBlockedEntry>(
      tlvs, change, {wire::FileOperation::kPortBlocked, wire::TlvType::kPortBlocked}, count, fill,
      msg);
}

uint32_t ficon_cmi_file_set_port_name_portaddr_nonblock(uint32_t requester, mts_handle_t handle,
                                                        const char* word_a, const char* word_b,
                                                        uint32_t wait, uint32_t vsan,
                                                        char* file_name, const uint32_t* file_key,
                                                        const ficon_cmi_port_name_entry_t* entries,
                                                        uint32_t count, uint32_t convert,
                                                        uint32_t codepage, mts_msg_ref_t* msg) {
  const FileChange change{{requester, handle, word_a, word_b, wait},
                          vsan,
                          file_name,
                          file_key,
                          convert == kConvert,
                          codepage};
  FileChangeTlvs tlvs;
  const auto fill = [&](std::uint32_t i, wire::PortNameEntry* record) {
    return to_wire(entries[i], change, record);
  };
  return send_entries<wire::PortNameEntry>(
      tlvs, change, {wire::FileOperation::kPortName, wire::TlvType::kPortName}, count, fill, msg);
}

uint32_t ficon_cmi_file_set_prohibit_bitset_nonblock(uint32_t requester, mts_handle_t handle,
                                                     const char* word_a, const char* word_b,
                                                     uint32_t wait, uint32_t vsan, char* file_name,
                                                     const uint32_t* file_key,
                                                     const ficon_cmi_prohibit_entry_t* entries,
                                                     uint32_t count, uint32_t convert,
                                                     uint32_t codepage, mts_msg_ref_t* msg) {
  const FileChange change{{requester, handle, word_a, word_b, wait},
                          vsan,
                          file_name,
                          file_key,
                          convert == kConvert,
                          codepage};
  // count x 40 + 1182: room for 254 entries, every usable port address. A size that wraps is asked
  // for as one that nobody has.
  std::uint32_t capacity = 0;
  if (__builtin_mul_overflow(count, std::uint32_t{sizeof(wire::ProhibitEntry)}, &capacity) ||
      __builtin_add_overflow(capacity, 1182U, &capacity)) {
    capacity = UINT32_MAX;
  }
  // Tracked memory, released with plain `free`: intended.
  const Malloced<std::uint8_t> buffer(
      allocate(TEVRAK_MEM_setprohibit_tlv, capacity == UINT32_MAX ? SIZE_MAX : capacity, __LINE__));
  if (!buffer) return status::kNoMemory;
  __builtin_memset(buffer.get(), 0, capacity);
  TlvWriter tlvs(buffer.get(), capacity);
  const auto fill = [&](std::uint32_t i, wire::ProhibitEntry* record) {
    *record = to_wire(entries[i]);
    return status::kOk;
  };
  return send_entries<wire::ProhibitEntry>(
      tlvs, change, {wire::FileOperation::kProhibitBitset, wire::TlvType::kProhibitBitset}, count,
      fill, msg);
}

// The ranges: the same setting for consecutive port addresses. Their entries are tracked memory,
// released with plain `free`: intended.

uint32_t ficon_cmi_set_port_blocked_portaddr_range(uint32_t requester, mts_handle_t handle,
                                                   const char* word_a, const char* word_b,
                                                   uint32_t wait, uint32_t vsan, char* file_name,
                                                   const uint32_t* file_key, uint16_t first,
                                                   const uint8_t* blocked, uint32_t count,
                                                   uint32_t convert, uint32_t codepage,
                                                   mts_msg_ref_t* msg) {
  const Malloced<ficon_cmi_port_blocked_entry_t> entries(
      allocate_entries<ficon_cmi_port_blocked_entry_t>(TEVRAK_MEM_setportblock, count, __LINE__));
  if (!entries) return kNoEntries;
  for (std::uint32_t i = 0; i < count; ++i) {
    entries[i] = {static_cast<std::uint16_t>(first + i), blocked[i]};
  }
  return ficon_cmi_file_set_port_blocked_portaddr_nonblock(requester, handle, word_a, word_b, wait,
                                                           vsan, file_name, file_key, entries.get(),
                                                           count, convert, codepage, msg);
}

uint32_t ficon_cmi_set_port_name_portaddr_range(uint32_t requester, mts_handle_t handle,
                                                const char* word_a, const char* word_b,
                                                uint32_t wait, uint32_t vsan, char* file_name,
                                                const uint32_t* file_key, uint16_t first,
                                                const char* names, uint32_t count, uint32_t convert,
                                                mts_msg_ref_t* msg) {
  const Malloced<ficon_cmi_port_name_entry_t> entries(
      allocate_entries<ficon_cmi_port_name_entry_t>(TEVRAK_MEM_setportname, count, __LINE__));
  if (!entries) return kNoEntries;
  for (std::uint32_t i = 0; i < count; ++i) {
    constexpr std::size_t kStride = sizeof(ficon_cmi_port_name_entry_t::port_name);
    entries[i].port_address = first + i;
    __builtin_memcpy(entries[i].port_name, names + i * kStride, kStride);
  }
  const std::uint32_t codepage = codepage_of({requester, handle, word_a, word_b, wait}, vsan);
  if (codepage == 0) return status::kNotEnabled;
  return ficon_cmi_file_set_port_name_portaddr_nonblock(requester, handle, word_a, word_b, wait,
                                                        vsan, file_name, file_key, entries.get(),
                                                        count, convert, codepage, msg);
}

uint32_t ficon_cmi_set_prohibit_bitset_range(uint32_t requester, mts_handle_t handle,
                                             const char* word_a, const char* word_b, uint32_t wait,
                                             uint32_t vsan, char* file_name,
                                             const uint32_t* file_key, uint16_t first,
                                             uint32_t common_value, const uint8_t* bitsets,
                                             uint32_t count, uint32_t convert, uint32_t codepage,
                                             mts_msg_ref_t* msg) {
  const Malloced<ficon_cmi_prohibit_entry_t> entries(
      allocate_entries<ficon_cmi_prohibit_entry_t>(TEVRAK_MEM_setprohibit, count, __LINE__));
  if (!entries) return kNoEntries;
  for (std::uint32_t i = 0; i < count; ++i) {
    constexpr std::size_t kStride = sizeof(ficon_cmi_prohibit_entry_t::bitset);
    entries[i].port_address = first + i;
    entries[i].common_value = common_value;
    __builtin_memcpy(entries[i].bitset, bitsets + i * kStride, kStride);
  }
  return ficon_cmi_file_set_prohibit_bitset_nonblock(requester, handle, word_a, word_b, wait, vsan,
                                                     file_name, file_key, entries.get(), count,
                                                     convert, codepage, msg);
}

uint32_t ficon_cmi_file_parse_set_port_cfg(mts_msg_ref_t* reply) {
  TlvReader reader(mts_payload_get(reply));
  if (reader.empty()) {
    console(kNoTlvs);
    return status::kInvalidPayload;
  }
  Tlv tlv{};
  if (reader.find(wire::TlvType::kFileRequest, tlv)) {
    return tlv.read<wire::FileRequest>().status.get();
  }
  return reader.status() != 0 ? reader.status() : status::kNoReply;
}
