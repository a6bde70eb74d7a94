#include "server/options.h"

#include <pwd.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdlib>

namespace ficon::emulator {
namespace {

/** What was wrong with the words, from whom, and where to read on. */
std::string usage_text(const CLI::App*, const CLI::Error& error) {
  return "fcd-emulator: " + std::string(error.what()) +
         "\nRun fcd-emulator --help for the options and their values.\n";
}

/** A user by name or number. */
unsigned user_id(const std::string& user) {
  unsigned id = 0;
  const auto [end, error] = std::from_chars(user.data(), user.data() + user.size(), id);
  if (error == std::errc{} && end == user.data() + user.size()) return id;
  const passwd* found = getpwnam(user.c_str());
  if (found == nullptr) throw CLI::ValidationError("--allow-user", "no user is called " + user);
  return found->pw_uid;
}

void add_limits(CLI::App& app, Options& options) {
  app.add_option("--max-clients", options.limits.clients, "clients at a time")
      ->check(CLI::Range(1, 65536))
      ->capture_default_str();
  app.add_option("--max-queued", options.limits.queued_bytes,
                 "bytes of replies that a client may leave waiting before it is disconnected")
      ->check(CLI::Range(4096, 1 << 30))
      ->capture_default_str();
  app.add_option("--max-message", options.limits.message_bytes, "bytes of one request")
      ->check(CLI::Range(std::size_t{4096}, std::size_t{platform::kMaxMessage}))
      ->capture_default_str();
  app.add_option("--history", options.history, "entries that the director history keeps")
      ->check(CLI::Range(1, 10'000'000))
      ->capture_default_str();
}

}  // namespace

Options parse_options(int argc, char** argv) {
  CLI::App app{
      "The FICON daemon of a switch, emulated: serves FICON management requests on a local "
      "socket and keeps the switch's state in a file."};
  Options options;
  std::vector<std::string> users;
  const std::map<std::string, LogLevel> levels{{"error", LogLevel::kError},
                                               {"warning", LogLevel::kWarning},
                                               {"info", LogLevel::kInfo},
                                               {"debug", LogLevel::kDebug}};
  std::string level = "info";
  app.failure_message(usage_text);
  app.set_version_flag("--version", "fcd-emulator " FICON_VERSION);
  app.add_option("--socket", options.socket, "path of the socket to listen on")->required();
  app.add_option("--store", options.store, "SQLite file, or directory for it")->required();
  app.add_option("--chassis", options.chassis, "TOML file that describes the chassis")
      ->check(CLI::ExistingFile);
  app.add_option("--log-level", level, "error, warning, info or debug")
      ->check(CLI::IsMember(levels))
      ->capture_default_str();
  app.add_option("--allow-user", users,
                 "user that may connect besides root and the emulator's own; may be repeated");
  add_limits(app, options);
  try {
    app.parse(argc, argv);
    options.users = {geteuid(), 0};
    for (const std::string& user : users) options.users.insert(user_id(user));
  } catch (const CLI::ParseError& error) {
    constexpr int kUsage = 2;
    std::exit(app.exit(error) == 0 ? 0 : kUsage);
  }
  options.log_level = levels.at(level);
  return options;
}

}  // namespace ficon::emulator
