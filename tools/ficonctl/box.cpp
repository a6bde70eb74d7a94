/** `ficonctl box`: the director as a whole. */
#include <platform/mts.h>

#include <cstring>
#include <memory>

#include "box_count.h"
#include "command.h"
#include "wire/box_status.h"

namespace ficon::ctl {
namespace {

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

std::string label_of(const wire::BoxCount& entry) {
  const auto* label = reinterpret_cast<const char*>(entry.label.raw);
  return {label, strnlen(label, sizeof entry.label.raw)};
}

/** The first three numbers: release, maintenance, build. Known once the session is open. */
std::string software_version() {
  std::uint8_t numbers[3];
  ficon_cmi_get_sw_version(0, numbers, sizeof numbers);
  return std::to_string(numbers[0]) + '.' + std::to_string(numbers[1]) + '.' +
         std::to_string(numbers[2]);
}

void show_box_status(Context& context) {
  const BoxStatus status = read_box_status(context.session);
  const auto* entries = reinterpret_cast<const wire::BoxCount*>(status.get() + 1);
  Json json = {{"software version", software_version()}};
  Table table({"DIRECTOR", "VALUE"});
  table.add({"software version", software_version()});
  for (std::size_t i = 0; i < status->group_count * wire::kBoxEntriesPerGroup; ++i) {
    const std::string label = label_of(entries[i]);
    if (label.empty()) continue;  // a group is filled up with empty entries
    const std::uint32_t value = entries[i].value.get();
    json[label] = value;
    table.add({label, std::to_string(value)});
  }
  context.output.show(json, table);
}

}  // namespace

std::optional<std::uint32_t> box_count(Session& session, const std::string& label) {
  const BoxStatus status = read_box_status(session);
  const auto* entries = reinterpret_cast<const wire::BoxCount*>(status.get() + 1);
  for (std::size_t i = 0; i < status->group_count * wire::kBoxEntriesPerGroup; ++i) {
    if (label_of(entries[i]) == label) return entries[i].value.get();
  }
  return std::nullopt;
}

void register_box(CLI::App& app, Context& context) {
  CLI::App& object = add_object(app, "box", "The director as a whole");
  add_action(object, "status", "Show the director's status entries",
             [&context] { show_box_status(context); });
}

}  // namespace ficon::ctl
