/** ficonctl: everything that the library can do, for a person and for a script. */
#include <algorithm>
#include <map>
#include <vector>

#include "command.h"
#include "parse.h"
#include "server/embedded.h"
#include "transport/endpoint.h"

namespace ficon::ctl {
namespace {

void add_global_options(CLI::App& app, Context& context, bool& no_color) {
  SessionOptions& options = context.options;
  app.add_option("--endpoint", options.endpoint,
                 "Where the daemon is: embedded:DIR or unix:PATH (default: $FICON_ENDPOINT, else "
                 "an emulator of this program's own)");
  app.add_option("--requester", options.requester, "Who asks: operator, agent, host or a code")
      ->transform(CLI::CheckedTransformer(
          std::map<std::string, std::uint32_t>{{"operator", 1}, {"agent", 2}, {"host", 3}},
          CLI::ignore_case))
      ->type_name("WHO");
  app.add_option("--wait", options.wait_ms, "How long to wait for a reply; 0 without end")
      ->type_name("MS");
  app.add_flag("--verbose", options.verbose, "Print every exchange to standard error");
  app.add_flag("--json", context.output.json, "Results and errors as JSON");
  app.add_flag("--no-color", no_color, "No colour, also on a terminal");
}

std::vector<std::string> names_of(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* each : app.get_subcommands([](const CLI::App*) { return true; })) {
    names.push_back(each->get_name());
  }
  return names;
}

bool takes_value(const std::string& argument) {
  return argument == "--endpoint" || argument == "--requester" || argument == "--wait";
}

/** The words that are no options: object and action first. */
std::vector<std::string> words_of(int argc, char** argv) {
  std::vector<std::string> words;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (takes_value(argument)) {
      ++i;
    } else if (!argument.starts_with('-')) {
      words.push_back(argument);
    }
  }
  return words;
}

void check_name(const CLI::App& app, const std::string& kind, const std::string& name) {
  const std::vector<std::string> known = names_of(app);
  if (known.empty() || std::ranges::find(known, name) != known.end()) return;
  throw UsageError("there is no " + kind + " \"" + name + "\"" + did_you_mean(name, known));
}

/** Before the parser sees them: a mistyped object or action deserves a better word than its own. */
void check_words(const CLI::App& app, const std::vector<std::string>& words) {
  if (words.empty()) return;
  check_name(app, "object", words[0]);
  if (words.size() > 1) check_name(*app.get_subcommand(words[0]), "action", words[1]);
}

int run(int argc, char** argv) {
  Context context;
  CLI::App app{"Look at and change the FICON function of a switch"};
  app.require_subcommand(1);
  bool no_color = false;
  add_global_options(app, context, no_color);
  register_commands(app, context);
  // Errors of the words themselves must already know whether they are to be JSON.
  context.output.json = std::find(argv + 1, argv + argc, std::string("--json")) != argv + argc;
  app.parse_complete_callback([&] {
    if (no_color) context.output.color = false;
  });
  try {
    check_words(app, words_of(argc, argv));
    app.parse(argc, argv);
    return static_cast<int>(Exit::kDone);
  } catch (const CLI::CallForHelp&) {
    context.output.raw(app.help());
    return static_cast<int>(Exit::kDone);
  } catch (const CLI::ParseError& error) {
    context.output.fail_usage(std::string(error.what()) + "; see --help");
    return static_cast<int>(Exit::kUsage);
  } catch (const UsageError& error) {
    context.output.fail_usage(error.what());
    return static_cast<int>(Exit::kUsage);
  } catch (const Failure& failure) {
    context.output.fail(failure);
    return static_cast<int>(Exit::kFailed);
  }
}

}  // namespace
}  // namespace ficon::ctl

int main(int argc, char** argv) {
  ficon_embedded_register(ficon::emulator::connect_embedded);
  return ficon::ctl::run(argc, argv);
}
