/** Every object of the tool, one line each. */
#include "command.h"

namespace ficon::ctl {

void register_vsan(CLI::App& app, Context& context);
void register_lock(CLI::App& app, Context& context);
void register_host_data(CLI::App& app, Context& context);
void register_pib(CLI::App& app, Context& context);
void register_history(CLI::App& app, Context& context);
void register_limits(CLI::App& app, Context& context);
void register_box(CLI::App& app, Context& context);
void register_file(CLI::App& app, Context& context);
void register_port_settings(CLI::App& app, Context& context);
void register_port_swap(CLI::App& app, Context& context);
void register_portmap(CLI::App& app, Context& context);
void register_portnumber(CLI::App& app, Context& context);
void register_prohibit_settings(CLI::App& app, Context& context);
void register_matrix(CLI::App& app, Context& context);
void register_config(CLI::App& app, Context& context);
void register_fru(CLI::App& app, Context& context);
void register_diagnostics(CLI::App& app, Context& context);
void register_version(CLI::App& app, Context& context);

namespace {

/** An empty word is mostly a script's variable that nobody has set. */
void refuse_empty_words(CLI::App& app, const Context& context) {
  for (CLI::Option* option : app.get_options()) {
    if (option->get_items_expected_min() == 0 || context.may_be_empty.contains(option)) continue;
    option->check([](const std::string& word) {
      return word.empty() ? std::string("an empty word is no value") : std::string();
    });
  }
  for (CLI::App* below : app.get_subcommands([](const CLI::App*) { return true; })) {
    refuse_empty_words(*below, context);
  }
}

}  // namespace

void register_commands(CLI::App& app, Context& context) {
  register_vsan(app, context);
  register_lock(app, context);
  register_host_data(app, context);
  register_pib(app, context);
  register_history(app, context);
  register_limits(app, context);
  register_box(app, context);
  register_file(app, context);
  register_port_settings(app, context);
  register_port_swap(app, context);
  register_portmap(app, context);
  register_portnumber(app, context);
  register_prohibit_settings(app, context);
  register_matrix(app, context);
  register_config(app, context);
  register_fru(app, context);
  register_diagnostics(app, context);
  register_version(app, context);
  refuse_empty_words(app, context);
}

}  // namespace ficon::ctl
