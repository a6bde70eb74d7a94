/** `ficonctl complete -- WORD...`: what the shell's completion asks; not listed in the help. */
#include "command.h"
#include "words.h"

namespace ficon::ctl {

void register_complete(CLI::App& app, Context& context) {
  CLI::App* complete = app.add_subcommand("complete", "Print what may stand for the last word");
  complete->group("");
  complete->prefix_command();
  complete->callback([&app, &context, complete] {
    std::string text;
    for (const std::string& each : completions(app, complete->remaining())) text += each + '\n';
    context.output.raw(text);
  });
}

}  // namespace ficon::ctl
