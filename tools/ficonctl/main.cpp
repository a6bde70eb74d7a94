/** ficonctl: everything that the library can do, for a person and for a script. */
#include <algorithm>
#include <string>
#include <vector>

#include "command.h"
#include "parse.h"
#include "requester.h"
#include "server/embedded.h"
#include "transport/endpoint.h"
#include "words.h"

namespace ficon::ctl {
namespace {

void add_global_options(CLI::App& app, Context& context) {
  SessionOptions& options = context.options;
  app.add_option("--endpoint", options.endpoint,
                 "Where the daemon is: embedded:DIR or unix:PATH (default: $FICON_ENDPOINT, else "
                 "an emulator of this program's own)")
      ->type_name("ENDPOINT");
  app.add_option_function<std::string>(
         "--requester",
         [&options](const std::string& who) { options.requester = parse_requester(who); },
         "Who asks: operator (default), agent or host, or its code")
      ->type_name("WHO");
  app.add_option_function<std::string>(
         "--wait",
         [&options](const std::string& wait) {
           options.wait_ms = parse_number(wait, 0, 0xffffffff, "--wait");
         },
         "How long to wait for a reply (default: 10000); 0 without end")
      ->type_name("MS");
  app.add_flag("--verbose", options.verbose, "Print every exchange to standard error");
  app.add_flag("--json", context.output.json, "Results and errors as JSON");
  app.add_flag_callback(
      "--no-color", [&context] { context.output.color = false; }, "No colour, also on a terminal");
}

/** The parser's sentence begins with the option's name. */
std::string explain_mismatch(const std::string& sentence) {
  const std::string option = sentence.substr(0, sentence.find(':'));
  const bool lacks = sentence.find("missing") != std::string::npos;
  return option + (lacks ? " needs a value" : " is given more than once");
}

std::string explain_extra(const std::string& word) {
  return word.starts_with('-') ? "there is no option \"" + word + "\" here"
                               : "\"" + word + "\" is one word too many";
}

void parse(CLI::App& app, Context& context, const std::vector<std::string>& arguments,
           const std::vector<std::string>& words) {
  try {
    check_words(app, words, arguments);
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));  // wants it reversed
  } catch (const CLI::CallForHelp&) {
    context.output.raw(app.help());
  } catch (const CLI::CallForVersion& version) {
    context.output.raw(std::string(version.what()) + "\n");
  } catch (const CLI::ArgumentMismatch& error) {
    throw UsageError(explain_mismatch(error.what()));
  } catch (const CLI::ExtrasError& error) {
    const std::string better = explain_words(app, words, arguments);
    throw UsageError(better.empty() ? explain_extra(app.remaining(true).front()) : better);
  } catch (const CLI::ParseError& error) {
    const std::string better = explain_words(app, words, arguments);
    throw UsageError(better.empty() ? error.what() : better);
  }
}

/** `ficonctl complete -- WORD...`, for the shell: what may stand for the last word, one a line. */
int print_completions(const CLI::App& app, Context& context,
                      const std::vector<std::string>& arguments) {
  std::string text;
  const std::size_t before = std::min<std::size_t>(arguments.size(), 2);  // "complete" and "--"
  for (const std::string& each : completions(
           app, {arguments.begin() + static_cast<std::ptrdiff_t>(before), arguments.end()})) {
    text += each + "\n";
  }
  context.output.raw(text);
  return static_cast<int>(Exit::kDone);
}

int run(int argc, char** argv) {
  Context context;
  CLI::App app{"Look at and change the FICON function of a switch", "ficonctl"};
  app.require_subcommand(1);
  app.set_version_flag("--version", kVersionText, "Print the version");
  add_global_options(app, context);
  register_commands(app, context);
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (!arguments.empty() && arguments.front() == "complete") {
    return print_completions(app, context, arguments);
  }
  // Errors of the words themselves must already know whether they are to be JSON.
  context.output.json = std::ranges::find(arguments, "--json") != arguments.end();
  const std::vector<std::string> words = words_of(app, arguments);
  try {
    parse(app, context, arguments, words);
    return static_cast<int>(Exit::kDone);
  } catch (const UsageError& error) {
    context.output.fail_usage(error.what(), help_command(app, words));
    return static_cast<int>(Exit::kUsage);
  } catch (const Failure& failure) {
    context.output.fail(failure);
    return static_cast<int>(Exit::kFailed);
  } catch (const std::exception& error) {  // of a library: memory that has run out, mostly
    context.output.fail(Failure(0, "unexpected", error.what(), "see whether the machine is well"));
    return static_cast<int>(Exit::kFailed);
  }
}

}  // namespace
}  // namespace ficon::ctl

int main(int argc, char** argv) {
  ficon_embedded_register(ficon::emulator::connect_embedded);
  return ficon::ctl::run(argc, argv);
}
