/** `ficonctl file`: the configuration files of a VSAN. */
#include <sstream>

#include "command.h"
#include "confirm.h"
#include "file_client.h"
#include "file_text.h"
#include "requester.h"
#include "whole_file.h"
#include "wire/fcd_status.h"

namespace ficon::ctl {
namespace {

using wire::FileOperation;

struct FileArguments {
  std::string vsan;
  std::string name;
  std::string other;
  std::string text;

  FileName file() const { return named_file(vsan, name); }
};

std::string editor_text(const FileFacts& file) {
  return file.editor == 0 ? "-" : requester_name(file.editor);
}

std::string description_of(Session& session, const FileName& file) {
  for (const FileFacts& facts : list_files(session, file.vsan)) {
    if (facts.name == file.name) return facts.description;
  }
  return "";
}

/** Opening a file that is not there would create it: create wants that, the others do not. */
void require_new(Session& session, const FileEdit& edit, bool wanted, const std::string& what) {
  if (edit.is_new() == wanted) return;
  const FcdStatus status = wanted ? FcdStatus::kFileExists : FcdStatus::kNoSuchFile;
  throw session.failure(static_cast<std::uint32_t>(status), what);
}

void say(Context& context, const FileName& file, const std::string& done) {
  context.output.show({{"vsan", file.vsan}, {"file", file.name}, {"done", done}},
                      file.text() + " " + done);
}

void list(Context& context, const FileArguments& arguments) {
  Json json = Json::array();
  Table table({"NAME", "EQUALS ACTIVE", "OPEN BY", "DESCRIPTION"});
  for (const FileFacts& file : list_files(context.session, parse_vsan(arguments.vsan))) {
    json.push_back({{"name", file.name},
                    {"equals-active", file.equals_active},
                    {"open-by", editor_text(file)},
                    {"description", file.description}});
    table.add({file.name, file.equals_active ? "yes" : "no", editor_text(file), file.description});
  }
  context.output.show(json, table);
}

void show(Context& context, const FileArguments& arguments) {
  const FileName file = file_or_active(arguments.vsan, arguments.name);
  const PortTable ports = read_ports(context.session, file);
  const Json json{{"vsan", file.vsan},
                  {"file", arguments.name},
                  {"ports", to_json(ports, ports_of_interest(ports))}};
  const Table table = to_table(ports);
  if (table.has_rows()) {
    context.output.show(json, table);
  } else {
    context.output.show(json, file.text() + " has no port installed and no setting");
  }
}

void create(Context& context, const FileArguments& arguments) {
  const FileName file = arguments.file();
  FileEdit edit(context.session, file);
  require_new(context.session, edit, true, "cannot create " + file.text());
  edit.keep();
  say(context, file, "created");
}

void describe(Context& context, const FileArguments& arguments) {
  const FileName file = arguments.file();
  if (arguments.text.empty() || arguments.text.size() > kDescriptionLength) {
    throw UsageError("a description has 1 to 24 characters");
  }
  FileEdit edit(context.session, file);
  require_new(context.session, edit, false, "cannot describe " + file.text());
  edit.describe(arguments.text);
  edit.keep();
  say(context, file, "described");
}

void copy(Context& context, const FileArguments& arguments) {
  const FileName from = arguments.file();
  const FileName to = named_file(arguments.vsan, arguments.other);
  copy_file(context.session, from, to);
  say(context, from, "copied to " + to.name);
}

void rename(Context& context, const FileArguments& arguments) {
  const FileName file = arguments.file();
  const FileName renamed = named_file(arguments.vsan, arguments.other);
  FileEdit edit(context.session, file);
  require_new(context.session, edit, false, "cannot rename " + file.text());
  edit.rename(renamed.name);
  edit.keep();
  say(context, file, "renamed to " + renamed.name);
}

void apply(Context& context, const FileArguments& arguments) {
  const FileName file = arguments.file();
  confirm_disruption(context, file.vsan, "applying file " + file.name);
  file_operation(context.session, file, FileOperation::kApply, "cannot apply");
  say(context, file, "applied to the active configuration");
}

void diff(Context& context, const FileArguments& arguments) {
  const PortTable a = read_ports(context.session, file_or_active(arguments.vsan, arguments.name));
  const PortTable b = read_ports(context.session, file_or_active(arguments.vsan, arguments.other));
  const std::vector<std::string> lines = differences(a, b);
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  context.output.show(Json(lines), lines.empty() ? "no difference" : text);
}

void check(Context& context, const FileArguments& arguments) {
  const std::vector<std::string> lines =
      findings(read_ports(context.session, file_or_active(arguments.vsan, arguments.name)));
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  context.output.show(Json(lines), lines.empty() ? "nothing to be found fault with" : text);
}

void export_file(Context& context, const FileArguments& arguments) {
  const FileName file = file_or_active(arguments.vsan, arguments.name);
  FileText text{.description = description_of(context.session, file),
                .ports = read_ports(context.session, file)};
  const std::string json = file_to_json(text).dump(2) + "\n";
  if (arguments.text.empty()) {
    context.output.raw(json);
    return;
  }
  write_file(arguments.text, json);
  say(context, file, "exported to " + arguments.text);
}

void import_file(Context& context, const FileArguments& arguments) {
  const FileName file = arguments.file();
  const FileText wanted = file_from_json(read_file(arguments.text));
  for (const Port& port : wanted.ports) {
    if (!port.name.empty()) check_port_name(context.session, file.vsan, port.name);
  }
  FileEdit edit(context.session, file);
  edit.change(read_ports(context.session, file, edit.key()), wanted.ports);
  if (wanted.description != description_of(context.session, file)) {
    edit.describe(wanted.description);
  }
  edit.keep();
  say(context, file, "imported from " + arguments.text);
}

}  // namespace

void register_file(CLI::App& app, Context& context) {
  CLI::App& object = add_object(app, "file", "The configuration files of a VSAN");
  auto arguments = keep<FileArguments>();
  using Action = void (*)(Context&, const FileArguments&);
  const auto add = [&](const char* name, const char* help, Action run) -> CLI::App& {
    CLI::App& action =
        add_action(object, name, help, [&context, arguments, run] { run(context, *arguments); });
    action.add_option("VSAN", arguments->vsan, "VSAN number")->required();
    return action;
  };
  const auto add_named = [&](const char* name, const char* help, Action run) -> CLI::App& {
    CLI::App& action = add(name, help, run);
    action.add_option("NAME", arguments->name, "File name, 1 to 8 characters")->required();
    return action;
  };
  add("list", "List the files", list);
  add_named("show", "Show what a file (or `active`) holds for each port", show);
  add_named("create", "Create an empty file", create);
  add_named("delete", "Delete a file", [](Context& c, const FileArguments& a) {
    file_operation(c.session, a.file(), FileOperation::kDelete, "cannot delete");
    say(c, a.file(), "deleted");
  });
  add_named("copy", "Copy a file", copy)
      .add_option("TO", arguments->other, "Name of the copy")
      ->required();
  add_named("rename", "Rename a file", rename)
      .add_option("TO", arguments->other, "The new name")
      ->required();
  add_named("describe", "Give a file a description", describe)
      .add_option("TEXT", arguments->text, "1 to 24 characters")
      ->required();
  add_yes_flag(add_named("apply", "Make a file the active configuration", apply), context);
  add_named("save", "Save the active configuration as a file",
            [](Context& c, const FileArguments& a) {
              file_operation(c.session, a.file(), FileOperation::kSaveActive, "cannot save");
              say(c, a.file(), "holds the active configuration");
            });
  add_named("diff", "Show how one file (or `active`) differs from another", diff)
      .add_option("OTHER", arguments->other, "The other file, or `active`")
      ->required();
  add_named("check", "List what an operator should look at in a file", check);
  add_named("export", "Write a file as JSON text", export_file)
      .add_option("-o,--output", arguments->text, "Where to (default: standard output)");
  add_named("import", "Read a file from JSON text: all of it or nothing", import_file)
      .add_option("FROM", arguments->text, "A text that `file export` wrote")
      ->required();
}

}  // namespace ficon::ctl
