/** `ficonctl version`: of the tool and its library, which are built together. */
#include "command.h"

namespace ficon::ctl {

const char* const kVersionText = "ficonctl " FICON_VERSION;

void register_version(CLI::App& app, Context& context) {
  CLI::App* version =
      app.add_subcommand("version", "Print the version of the tool and its library");
  version->fallthrough();
  version->callback([&context] {
    context.output.show({{"version", FICON_VERSION}}, kVersionText);
  });
}

}  // namespace ficon::ctl
