#include "words.h"

#include <algorithm>

#include "parse.h"

namespace ficon::ctl {
namespace {

const CLI::App* find_command(const CLI::App& app, const std::string& name) {
  const auto found =
      app.get_subcommands([&](const CLI::App* each) { return each->get_name() == name; });
  return found.empty() ? nullptr : found.front();
}

std::vector<std::string> names_of(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* each : app.get_subcommands([](const CLI::App*) { return true; }))
    names.push_back(each->get_name());
  return names;
}

/** The application, the object and the action that the words name, as far as they are known. */
std::vector<const CLI::App*> path_of(const CLI::App& app, const std::vector<std::string>& words) {
  std::vector<const CLI::App*> path{&app};
  for (const std::string& word : words) {
    const CLI::App* next = find_command(*path.back(), word);
    if (next == nullptr) break;
    path.push_back(next);
  }
  return path;
}

/** The long options that may stand on the path: an object's words take the global ones too. */
std::vector<std::string> options_of(const std::vector<const CLI::App*>& path) {
  std::vector<std::string> names;
  for (const CLI::App* level : path) {
    for (const CLI::Option* option : level->get_options()) {
      for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    }
  }
  return names;
}

/** Where an object or an action is missing: which there are. */
std::string missing_word(const std::vector<const CLI::App*>& path) {
  std::string list;
  for (const std::string& name : names_of(*path.back())) list += (list.empty() ? "" : ", ") + name;
  if (list.empty()) return "";
  return (path.size() == 1 ? "name an object: " : "name an action: ") + list;
}

/** The first option that the path does not have, and what is near. */
std::string unknown_option(const std::vector<const CLI::App*>& path,
                           const std::vector<std::string>& arguments) {
  const std::vector<std::string> known = options_of(path);
  for (const std::string& argument : arguments) {
    if (argument == "--") break;
    const std::string name = argument.substr(0, argument.find('='));
    if (!name.starts_with("--") || std::ranges::find(known, name) != known.end()) continue;
    return "there is no option \"" + name + "\" here" + did_you_mean(name, known);
  }
  return "";
}

bool takes_value(const CLI::App& app, const std::string& argument) {
  const CLI::Option* option = app.get_option_no_throw(argument);
  return option != nullptr && option->get_items_expected_min() > 0;
}

void check_name(const CLI::App& app, const std::string& kind, const std::string& name) {
  const std::vector<std::string> known = names_of(app);
  if (known.empty() || find_command(app, name) != nullptr) return;
  throw UsageError("there is no " + kind + " \"" + name + "\"" + did_you_mean(name, known));
}

}  // namespace

std::vector<std::string> words_of(const CLI::App& app, const std::vector<std::string>& arguments) {
  std::vector<std::string> words;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (takes_value(app, arguments[i])) {
      ++i;
    } else if (!arguments[i].starts_with('-')) {
      words.push_back(arguments[i]);
    }
  }
  return words;
}

void check_words(const CLI::App& app, const std::vector<std::string>& words,
                 const std::vector<std::string>& arguments) {
  if (words.empty()) return;
  // Whether an option that nobody knows takes a value, nobody knows: the object may be that.
  const auto object = std::ranges::find(arguments, words[0]);
  const std::string unknown = unknown_option({&app}, {arguments.begin(), object});
  if (!unknown.empty()) throw UsageError(unknown);
  check_name(app, "object", words[0]);
  if (words.size() > 1) check_name(*find_command(app, words[0]), "action", words[1]);
}

std::string explain_words(const CLI::App& app, const std::vector<std::string>& words,
                          const std::vector<std::string>& arguments) {
  const auto path = path_of(app, words);
  const std::string unknown = unknown_option(path, arguments);
  return unknown.empty() ? missing_word(path) : unknown;
}

std::string help_command(const CLI::App& app, const std::vector<std::string>& words) {
  std::string command = "ficonctl ";
  const auto path = path_of(app, words);
  for (std::size_t i = 1; i < path.size(); ++i) command += path[i]->get_name() + " ";
  return command + "--help";
}

std::vector<std::string> completions(const CLI::App& app, const std::vector<std::string>& typed) {
  if (typed.empty()) return {};
  const std::string& begun = typed.back();
  const auto path = path_of(app, words_of(app, {typed.begin(), typed.end() - 1}));
  std::vector<std::string> candidates;
  if (begun.starts_with('-')) {
    candidates = options_of(path);
  } else {
    candidates = names_of(*path.back());
  }
  std::erase_if(candidates, [&](const std::string& each) { return !each.starts_with(begun); });
  std::ranges::sort(candidates);
  candidates.erase(std::unique(candidates.begin(), candidates.end()), candidates.end());
  return candidates;
}

}  // namespace ficon::ctl
