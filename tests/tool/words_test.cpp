#include "words.h"

#include <doctest/doctest.h>

#include "failure.h"

using namespace ficon::ctl;

namespace {

using Words = std::vector<std::string>;

/** A small tool: two objects, a few actions, an option with a value. */
struct SmallTool {
  SmallTool() {
    app.add_option("--endpoint", endpoint);
    app.add_flag("--json");
    CLI::App* vsan = app.add_subcommand("vsan");
    vsan->add_subcommand("list");
    vsan->add_subcommand("show")->add_option("VSAN", endpoint);
    vsan->add_subcommand("set");
    app.add_subcommand("version");
  }

  std::string refusal(const Words& arguments) {
    try {
      check_words(app, words_of(app, arguments), arguments);
    } catch (const UsageError& error) {
      return error.what();
    }
    return "accepted";
  }

  CLI::App app;
  std::string endpoint;
};

}  // namespace

TEST_CASE("options and their values are no words") {
  SmallTool tool;
  CHECK(words_of(tool.app, {"--endpoint", "unix:/x", "vsan", "--json", "show", "20"}) ==
        Words{"vsan", "show", "20"});
  CHECK(words_of(tool.app, {"--endpoint=unix:/x", "vsan"}) == Words{"vsan"});
}

TEST_CASE("a mistyped object or action is named with what is near") {
  SmallTool tool;
  CHECK(tool.refusal({"--jsn", "list"}) ==
        "there is no option \"--jsn\" here: did you mean \"--json\"?");
  CHECK(tool.refusal({"vsna", "list"}) == "there is no object \"vsna\": did you mean \"vsan\"?");
  CHECK(tool.refusal({"vsan", "shwo"}) == "there is no action \"shwo\": did you mean \"show\"?");
  CHECK(tool.refusal({"disk"}) == "there is no object \"disk\"");
  CHECK(tool.refusal({"vsan", "show", "20"}) == "accepted");
  CHECK(tool.refusal({"version", "anything"}) == "accepted");
}

TEST_CASE("what is missing or unknown is explained") {
  SmallTool tool;
  CHECK(explain_words(tool.app, {}, {}) == "name an object: vsan, version");
  CHECK(explain_words(tool.app, {"vsan"}, {"vsan"}) == "name an action: list, show, set");
  CHECK(explain_words(tool.app, {"vsan", "list"}, {"vsan", "list", "--jsn"}) ==
        "there is no option \"--jsn\" here: did you mean \"--json\"?");
  CHECK(explain_words(tool.app, {"vsan", "list"}, {"vsan", "list", "--endpoint=x"}).empty());
  CHECK(explain_words(tool.app, {"vsan", "list"}, {"vsan", "list", "--", "--jsn"}).empty());
}

TEST_CASE("the help that is named is that of the words that are known") {
  SmallTool tool;
  CHECK(help_command(tool.app, {}) == "ficonctl --help");
  CHECK(help_command(tool.app, {"vsan", "show", "20"}) == "ficonctl vsan show --help");
  CHECK(help_command(tool.app, {"vsan", "shwo"}) == "ficonctl vsan --help");
}

TEST_CASE("completion offers objects, actions and options, as far as they are begun") {
  SmallTool tool;
  CHECK(completions(tool.app, {""}) == Words{"version", "vsan"});
  CHECK(completions(tool.app, {"vs"}) == Words{"vsan"});
  CHECK(completions(tool.app, {"vsan", "s"}) == Words{"set", "show"});
  CHECK(completions(tool.app, {"--endpoint", "unix:/x", "vsan", "l"}) == Words{"list"});
  CHECK(completions(tool.app, {"vsan", "--j"}) == Words{"--json"});
  CHECK(completions(tool.app, {"vsan", "show", ""}).empty());
  CHECK(completions(tool.app, {}).empty());
}
