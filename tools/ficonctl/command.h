/**
 * Commands: `ficonctl OBJECT ACTION`. An object is one file that registers its actions:
 *
 *   void register_clock(CLI::App& app, Context& context) {
 *     CLI::App& clock = add_object(app, "clock", "The switch's clock");
 *     add_action(clock, "show", "Print it", [&context] { ... });
 *   }
 *
 * and one line in commands.cpp. What an action's options are parsed into must live as long as the
 * program: `keep<T>()` sees to that.
 */
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <set>
#include <string>

#include "output.h"
#include "session.h"

namespace ficon::ctl {

struct Context {
  SessionOptions options;
  Session session{options};
  Output output;
  bool yes = false;                           // --yes was given
  std::set<const CLI::Option*> may_be_empty;  // arguments to which an empty word says something
};

inline CLI::App& add_object(CLI::App& app, const std::string& name, const std::string& help) {
  const auto known = app.get_subcommands([&](CLI::App* each) { return each->get_name() == name; });
  if (!known.empty()) return *known.front();  // an object may be spread over several files
  CLI::App* object = app.add_subcommand(name, help);
  object->require_subcommand(1);
  object->fallthrough();
  return *object;
}

inline CLI::App& add_action(CLI::App& object, const std::string& name, const std::string& help,
                            std::function<void()> run) {
  CLI::App* action = object.add_subcommand(name, help);
  action->fallthrough();
  action->callback(std::move(run));
  return *action;
}

/** Storage for an action's arguments. */
template <class T>
std::shared_ptr<T> keep() {
  return std::make_shared<T>();
}

/** "ficonctl 1.0.0" */
extern const char* const kVersionText;

void register_commands(CLI::App& app, Context& context);

}  // namespace ficon::ctl
