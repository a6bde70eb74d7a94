/** The words of a command line as typed: judged and completed before the parser sees them. */
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace ficon::ctl {

/** The words that are no options: object and action first. */
std::vector<std::string> words_of(const CLI::App& app, const std::vector<std::string>& arguments);

/** A mistyped object, action or option in front of them: a UsageError that names what is near. */
void check_words(const CLI::App& app, const std::vector<std::string>& words,
                 const std::vector<std::string>& arguments);

/** Why the parser refuses the words where they tell: a mistyped option, a missing action. Or "". */
std::string explain_words(const CLI::App& app, const std::vector<std::string>& words,
                          const std::vector<std::string>& arguments);

/** The help command of what the words name: "ficonctl vsan set --help". */
std::string help_command(const CLI::App& app, const std::vector<std::string>& words);

/** What may stand at the end of `typed`, whose last element is the word begun (maybe empty). */
std::vector<std::string> completions(const CLI::App& app, const std::vector<std::string>& typed);

}  // namespace ficon::ctl
