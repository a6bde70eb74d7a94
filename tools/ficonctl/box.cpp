/** `ficonctl box`: the director as a whole. */
#include <platform/mts.h>

#include <cstdio>
#include <memory>

#include "command.h"

namespace ficon::ctl {
namespace {

constexpr std::size_t kEntriesPerGroup = 5;

struct TrackedFree {
  void operator()(void* memory) const { mtrack_free(memory); }
};
using BoxStatus = std::unique_ptr<ficon_cmi_box_status_t, TrackedFree>;

BoxStatus read_box_status(Session& session) {
  const std::string what = "cannot read the box status";
  mts_msg_ref_t request{};
  session.require(what, ficon_cmi_get_box_status, &request);
  mts_msg_ref_t reply = receive_reply(session, &request, what);
  const MessageDrop drop(session.handle(), &reply);
  ficon_cmi_box_status_t* status = nullptr;
  if (const std::uint32_t failed = ficon_cmi_parse_box_status(&reply, &status)) {
    throw session.failure(failed, what);
  }
  return BoxStatus(status);
}

std::string hex_bytes(const std::uint8_t* bytes, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%02x", bytes[i]);
    if (i != 0 && i % 4 == 0) text += ' ';
    text += digits;
  }
  return text;
}

void show_box_status(Context& context) {
  const BoxStatus status = read_box_status(context.session);
  const auto* entries = reinterpret_cast<const ficon_cmi_box_entry_t*>(status.get() + 1);
  Json json{{"groups", Json::array()}};
  Table table({"GROUP", "ENTRY", "DATA"});
  for (std::size_t group = 0; group < status->group_count; ++group) {
    Json group_json = Json::array();
    for (std::size_t i = 0; i < kEntriesPerGroup; ++i) {
      const std::string data =
          hex_bytes(entries[group * kEntriesPerGroup + i].data, sizeof(ficon_cmi_box_entry_t));
      group_json.push_back(data);
      table.add({std::to_string(group + 1), std::to_string(i + 1), data});
    }
    json["groups"].push_back(group_json);
  }
  if (table.has_rows()) {
    context.output.show(json, table);
  } else {
    context.output.show(json, "the director reports no status entries");
  }
}

}  // namespace

void register_box(CLI::App& app, Context& context) {
  CLI::App& object = add_object(app, "box", "The director as a whole");
  add_action(object, "status", "Show the director's status entries",
             [&context] { show_box_status(context); });
}

}  // namespace ficon::ctl
