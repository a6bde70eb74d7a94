/** `ficonctl debug` and `ficonctl events`: what the library and the feature say of themselves. */
#include <unistd.h>

#include <cstdlib>
#include <sstream>

#include "command.h"
#include "configuration/configuration.h"
#include "parse.h"
#include "whole_file.h"

namespace ficon::ctl {
namespace {

void set_level(Context& context, const std::string& text) {
  const std::uint32_t level = parse_number(text, 0, 7, "logging level");
  Session& session = context.session;
  if (const auto status = platform::set_logging_level(session.handle(), session.wait(), level)) {
    throw session.failure(status, "cannot set the logging level");
  }
  context.output.show(Json{{"level", level}}, "the logging level is " + std::to_string(level));
}

/** The event history goes where the environment says; this shows it. */
void show_events(Context& context) {
  const char* path = std::getenv("FICON_EVENT_LOG");
  if (path == nullptr || *path == '\0') {
    throw Failure(0, "no-event-log", "no event history is kept",
                  "set FICON_EVENT_LOG to a file for the processes whose events you want");
  }
  Json json = Json::array();
  std::string text;
  for (const std::string& file : {std::string(path) + ".1", std::string(path)}) {  // oldest first
    if (access(file.c_str(), F_OK) != 0) continue;  // nothing was recorded there yet
    std::istringstream log(read_file(file));
    for (std::string line; std::getline(log, line);) {
      json.push_back(line);
      text += line + "\n";
    }
  }
  context.output.show(json, text.empty() ? "no event was recorded" : text);
}

}  // namespace

void register_diagnostics(CLI::App& app, Context& context) {
  CLI::App& debug = add_object(app, "debug", "The feature's debug output");
  auto level = keep<std::string>();
  add_action(debug, "level", "Set the logging level",
             [&context, level] { set_level(context, *level); })
      .add_option("LEVEL", *level, "0 to 7")
      ->required();
  CLI::App& events = add_object(app, "events", "The event history");
  add_action(events, "show", "Show the recorded events", [&context] { show_events(context); });
}

}  // namespace ficon::ctl
