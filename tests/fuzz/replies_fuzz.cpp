/**
 * Every parser of a reply, each over the same bytes as the transport would hand them over. The
 * first byte picks whether names are converted, and from which code page.
 */
#include <ficon_cmi.h>
#include <platform/ficon_base.h>
#include <platform/port_manager.h>

#include "received.h"

using namespace ficon::fuzz;

namespace {

/** Behind a payload there is that much zeroed room that a record may be copied from. */
constexpr std::size_t kSlack = ficon::platform::kReplySlack;
constexpr std::uint32_t kMostSwapOperations = 1280 * 2;

struct Conversion {
  std::uint32_t convert;
  std::uint32_t codepage;
};

Conversion conversion_from(std::uint8_t choice) {
  constexpr std::uint32_t kCodepages[] = {37, 500, 1047, 1140, 290, 0xffff};
  return {choice & 1U, kCodepages[choice / 2 % std::size(kCodepages)]};
}

/** A list cannot have more records than the reply has room for. */
void require_bounded(std::size_t records, std::size_t record, ByteView payload) {
  require(records * record <= payload.size(), "a list is no longer than its reply");
}

void settings(ByteView payload) {
  ficon_fcd_lock_rec_t lock{};
  ficon_parse_allegiance_msg(Received(payload).reply(), &lock);
  ficon_cmi_parse_vsan_cfg(Received(payload).reply());
  ficon_cmi_parse_set_ficon_state(Received(payload).reply());
  ficon_cmi_vsan_cfg_t record{};
  ficon_cmi_parse_vsan_info(Received(payload).reply(), &record);
  std::uint32_t number = 0;
  ficon_cmi_parse_getnext_type(Received(payload).reply(), &number);
  ficon_cmi_parse_max_port(Received(payload).reply());
  ficon_cmi_parse_set_host_data(Received(payload).reply(), &number);
}

void box_status(ByteView payload) {
  ficon_cmi_box_status_t* status = nullptr;
  if (ficon_cmi_parse_box_status(Received(payload).reply(), &status) == 0 && status != nullptr) {
    const std::size_t entries = std::size_t{status->group_count} * 5;
    const Bytes copy(
        reinterpret_cast<std::uint8_t*>(status + 1),
        reinterpret_cast<std::uint8_t*>(status + 1) + entries * sizeof(ficon_cmi_box_entry_t));
    require(copy.size() <= kSlack, "a box status fits the room behind a reply");
  }
  mtrack_free(status);
}

void host_data(ByteView payload) {
  std::vector<std::uint8_t> data(16384);
  std::uint32_t vsan = 0;
  std::uint32_t length = 0;
  ficon_cmi_parse_get_host_data(Received(payload).reply(), &vsan, data.data(), &length);
  require(length <= data.size(), "host data has at most 16384 bytes");
}

void lists(ByteView payload) {
  std::uint8_t first = 0;
  std::uint8_t last = 0;
  ficon_cmi_pib_rec_t* records = nullptr;
  if (ficon_cmi_parse_getpib(Received(payload).reply(), 0, &first, &last, &records) == 0) {
    require(first <= last, "a range of records runs forwards");
    require_bounded(last - first + 1U, sizeof *records, payload);
  }
  mtrack_free(records);

  std::uint32_t count = 0;
  std::uint32_t word = 0;
  std::uint32_t key = 0;
  ficon_cmi_hist_entry_t* entries = nullptr;
  if (ficon_cmi_parse_history_summary(Received(payload).reply(), &count, &word, &key, &entries) ==
      0) {
    require((entries == nullptr) == (count == 0), "entries are there when they are counted");
    if (entries != nullptr) require_bounded(count, 37, payload);  // as fcd sends them
  }
  mtrack_free(entries);
}

void ports(ByteView payload) {
  if_index_t if_index = 0;
  std::uint16_t number = 0;
  std::uint16_t address = 0;
  std::uint32_t fcid = 0;
  std::uint8_t answer = 0;
  ficon_parse_get_portmap_fcid(Received(payload).reply(), &if_index, &number, &address, &fcid,
                               &answer);
  ficon_cmi_swap_reply_t* swap = nullptr;
  if (ficon_cmi_parse_swap_port(Received(payload).reply(), &swap) == 0 && swap != nullptr) {
    require(swap->count <= kMostSwapOperations, "a swap has no more operations than ports");
  }
  mtrack_free(swap);
}

void files(ByteView payload, const Conversion& conversion) {
  std::uint32_t count = 0;
  std::uint32_t vsan = 0;
  std::uint8_t flag = 0;
  ficon_cmi_parse_file_ops(Received(payload).reply(), &count, &flag, &vsan);
  ficon_cmi_file_parse_set_port_cfg(Received(payload).reply());
  ficon_cmi_parse_set_saved_file(Received(payload).reply());

  char name[9] = {};
  ficon_cmi_port_info_t* port_list = nullptr;
  if (ficon_cmi_file_parse_port_info(1, Received(payload).reply(), &port_list, &vsan, name,
                                     conversion.convert, conversion.codepage, &count) == 0) {
    require_bounded(count, sizeof *port_list, payload);
    require((port_list == nullptr) == (count == 0), "ports are there when they are counted");
  }
  mtrack_free(port_list);

  ficon_cmi_file_info_t* file_list = nullptr;
  if (ficon_cmi_parse_file_info(1, Received(payload).reply(), &file_list, conversion.convert,
                                conversion.codepage, &count) == 0) {
    require_bounded(count, sizeof *file_list, payload);
  }
  mtrack_free(file_list);

  for (const std::int32_t offset : {0, 1, 0xffff}) {
    std::uint8_t contents[64];
    std::uint32_t copied = 0;
    ficon_cmi_parse_get_saved_file(Received(payload).reply(), offset, contents, sizeof contents,
                                   &copied);
    require(copied <= sizeof contents, "a slice fits its buffer");
  }
}

void services(ByteView payload) {
  std::uint32_t* vsans = nullptr;
  ficon_parse_get_enabled_vsans(Received(payload).reply(), &vsans);
  std::free(vsans);
  if_index_t if_index = 0;
  std::uint16_t number = 0;
  std::uint16_t address = 0;
  ficon_parse_get_portmap(Received(payload).reply(), &if_index, &number, &address);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input({data, size});
  const Conversion conversion = conversion_from(input.u8());
  const ByteView payload = input.rest();
  settings(payload);
  box_status(payload);
  host_data(payload);
  lists(payload);
  ports(payload);
  files(payload, conversion);
  services(payload);
  return 0;
}
