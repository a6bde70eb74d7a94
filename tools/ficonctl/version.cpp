/** `ficonctl version`: of the tool and its library. */
#include "command.h"

namespace ficon::ctl {

void register_version(CLI::App& app, Context& context) {
  app.add_subcommand("version", "Print the version of the tool and its library")
      ->callback([&context] {
        context.output.show({{"version", FICON_VERSION}}, "ficonctl " FICON_VERSION);
      });
}

}  // namespace ficon::ctl
