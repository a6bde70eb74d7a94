/** ficonctl: everything that the library can do, for a person and for a script. */
#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "command.h"
#include "server/embedded.h"
#include "transport/endpoint.h"
#include "words.h"

namespace ficon::ctl {
namespace {

void add_global_options(CLI::App& app, Context& context) {
  SessionOptions& options = context.options;
  app.add_option("--endpoint", options.endpoint,
                 "Where the daemon is: embedded:DIR or unix:PATH (default: $FICON_ENDPOINT, else "
                 "an emulator of this program's own)");
  app.add_option("--requester", options.requester, "Who asks: operator, agent or host, or its code")
      ->transform(CLI::CheckedTransformer(
          std::map<std::string, std::uint32_t>{{"operator", 1}, {"agent", 2}, {"host", 3}},
          CLI::ignore_case))
      ->type_name("WHO");
  app.add_option("--wait", options.wait_ms, "How long to wait for a reply; 0 without end")
      ->type_name("MS");
  app.add_flag("--verbose", options.verbose, "Print every exchange to standard error");
  app.add_flag("--json", context.output.json, "Results and errors as JSON");
  app.add_flag_callback(
      "--no-color", [&context] { context.output.color = false; }, "No colour, also on a terminal");
}

void parse(CLI::App& app, Context& context, int argc, char** argv,
           const std::vector<std::string>& words) {
  try {
    check_words(app, words);
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    context.output.raw(app.help());
  } catch (const CLI::ParseError& error) {
    throw UsageError(error.what());
  }
}

int run(int argc, char** argv) {
  Context context;
  CLI::App app{"Look at and change the FICON function of a switch", "ficonctl"};
  app.require_subcommand(1);
  add_global_options(app, context);
  register_commands(app, context);
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  // Errors of the words themselves must already know whether they are to be JSON.
  context.output.json = std::ranges::find(arguments, "--json") != arguments.end();
  const std::vector<std::string> words = words_of(app, arguments);
  try {
    parse(app, context, argc, argv, words);
    return static_cast<int>(Exit::kDone);
  } catch (const UsageError& error) {
    context.output.fail_usage(error.what(), help_command(app, words));
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
