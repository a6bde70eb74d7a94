/** `ficonctl history`: who changed what. */
#include <bit>
#include <cstring>
#include <ctime>
#include <functional>
#include <memory>

#include "command.h"
#include "interrupt.h"
#include "parse.h"
#include "requester.h"
#include "wire/cmi_header.h"
#include "wire/history.h"

namespace ficon::ctl {
namespace {

using wire::HistoryOperation;

struct TrackedFree {
  void operator()(void* memory) const { mtrack_free(memory); }
};

/** A reply: its entries, and how many were overwritten before the first of them. */
struct Batch {
  std::unique_ptr<ficon_cmi_hist_entry_t, TrackedFree> entries;
  std::uint32_t count = 0;
  std::uint32_t lost = 0;
};

/** Asks once; `key` goes on to the reply's position. */
Batch ask(Context& context, HistoryOperation operation, std::uint32_t& key,
          std::uint32_t most = 0) {
  Batch batch;
  ficon_cmi_hist_entry_t* entries = nullptr;
  context.session.require("cannot read the history", ficon_cmi_get_history_summary,
                          static_cast<std::uint32_t>(wire::MessageType::kGet), &key,
                          static_cast<std::uint32_t>(operation), most, 0U, &batch.count,
                          &batch.lost, &entries);
  batch.entries.reset(entries);
  return batch;
}

std::string change_name(std::uint8_t change) {
  for (const wire::HistoryChangeName& known : wire::kHistoryChangeNames) {
    if (static_cast<std::uint8_t>(known.change) == change) return known.name;
  }
  return "change " + std::to_string(change);
}

std::string time_text(std::uint32_t seconds) {
  const std::time_t time = seconds;
  std::tm utc{};
  gmtime_r(&time, &utc);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
  return text;
}

/** An entry as it is shown. */
struct Line {
  std::uint32_t position;
  std::string time;
  std::uint32_t vsan;
  std::string who;
  std::string change;
  std::string detail;
};

Line line_of(const ficon_cmi_hist_entry_t& entry) {
  wire::HistoryField field;
  std::memcpy(&field, entry.field, sizeof field);
  const auto* detail = reinterpret_cast<const char*>(field.detail.raw);
  constexpr std::uint8_t kUnstated = 4;
  return {field.position.get(),
          time_text(entry.value),
          field.vsan.get(),
          field.requester == kUnstated ? "-" : requester_name(field.requester),
          change_name(entry.byte_value),
          {detail, strnlen(detail, sizeof field.detail.raw)}};
}

Json to_json(const Line& line) {
  return {{"position", line.position}, {"time", line.time},     {"vsan", line.vsan},
          {"requester", line.who},     {"change", line.change}, {"detail", line.detail}};
}

std::vector<std::string> to_row(const Line& line) {
  return {std::to_string(line.position),
          line.time,
          line.vsan == 0 ? "-" : std::to_string(line.vsan),
          line.who,
          line.change,
          line.detail};
}

const std::vector<std::string> kColumns = {"POSITION", "TIME", "VSAN", "WHO", "CHANGE", "DETAIL"};

void warn_of_loss(std::uint32_t lost) {
  if (lost != 0) std::fprintf(stderr, "ficonctl: %u entries were overwritten\n", lost);
}

/** Everything behind `key`, batch by batch. */
void walk(Context& context, std::uint32_t& key, const std::function<void(const Batch&)>& visit) {
  for (;;) {
    const Batch batch = ask(context, HistoryOperation::kAfter, key);
    if (batch.count == 0) return;
    visit(batch);
  }
}

void show_all(Context& context, std::uint32_t key) {
  Json entries = Json::array();
  Table table(kColumns);
  std::uint32_t lost = 0;
  walk(context, key, [&](const Batch& batch) {
    // Beginning at 0 asks for what there is: then nothing counts as lost.
    if (key != 0) lost += batch.lost;
    for (std::uint32_t i = 0; i < batch.count; ++i) {
      const Line line = line_of(batch.entries.get()[i]);
      entries.push_back(to_json(line));
      table.add(to_row(line));
    }
  });
  warn_of_loss(lost);
  const Json json{{"entries", entries}, {"lost", lost}, {"position", key}};
  if (table.has_rows()) {
    context.output.show(json, table);
  } else {
    context.output.show(json, "nothing was recorded behind position " + std::to_string(key));
  }
}

/** One line an entry, as it comes; with --json an object a line. */
void follow(Context& context, std::uint32_t key, bool from_now) {
  constexpr std::chrono::milliseconds kBetween{200};
  watch_for_interrupt();
  if (from_now) ask(context, HistoryOperation::kExtent, key);
  do {
    walk(context, key, [&](const Batch& batch) {
      warn_of_loss(batch.lost);
      for (std::uint32_t i = 0; i < batch.count && !interrupted(); ++i) {
        const Line line = line_of(batch.entries.get()[i]);
        std::string text;
        for (const std::string& cell : to_row(line)) text += (text.empty() ? "" : "  ") + cell;
        context.output.raw((context.output.json ? to_json(line).dump() : text) + "\n");
      }
    });
  } while (pause_unless_interrupted(kBetween));
}

struct Arguments {
  std::string since;
  bool follow = false;
};

void show(Context& context, const Arguments& arguments) {
  const std::uint32_t key =
      arguments.since.empty() ? 0 : parse_number(arguments.since, 0, 0xffffffff, "--since");
  if (arguments.follow) return follow(context, key, arguments.since.empty());
  show_all(context, key);
}

}  // namespace

void register_history(CLI::App& app, Context& context) {
  CLI::App& object = add_object(app, "history", "Who changed what");
  auto arguments = keep<Arguments>();
  CLI::App& show_action = add_action(object, "show", "Show what was recorded, oldest first",
                                     [&context, arguments] { show(context, *arguments); });
  show_action.add_option("--since", arguments->since, "Only what stands behind this position")
      ->type_name("KEY");
  show_action.add_flag("--follow", arguments->follow,
                       "Stay and print what is recorded from now on (or since KEY), until Ctrl-C");
}

}  // namespace ficon::ctl
