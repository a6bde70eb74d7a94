#include "chassis/chassis_file.h"

// A malformed file breaks what the parser assumes of itself ("[[["): as an assertion that would end
// the process, as a hint to the optimizer it would be undefined. Its own check stands behind each.
#undef NDEBUG
#define TOML_ASSERT(expression) static_assert(true)
#define TOML_ENABLE_FORMATTERS 0
#include <toml++/toml.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <fstream>
#include <set>
#include <sstream>

#include "interface_index/interface_index.h"

namespace ficon::platform {
namespace {

constexpr std::size_t kMaxFile = 1024 * 1024;
constexpr std::int64_t kMaxFiconPorts = 1280;

/** What is wrong and where; caught in `read_chassis`. */
struct Problem {
  toml::source_region where;
  std::string what;
};

std::string quoted(std::string_view text) {
  return '"' + std::string(text) + '"';
}

template <class Value>
struct Word {
  std::string_view name;
  Value value;
};
template <class Value>
Word(const char*, Value) -> Word<Value>;  // clang 14 deduces no aggregate by itself
constexpr std::array kModes = {Word{"auto", PortMode::kAuto}, Word{"E", PortMode::kE},
                               Word{"F", PortMode::kF},       Word{"TE", PortMode::kTE},
                               Word{"SD", PortMode::kSD},     Word{"Fx", PortMode::kFx}};
constexpr std::array kConditions = {
    Word{"up", PortCondition::kUp}, Word{"offline", PortCondition::kOffline},
    Word{"admin-down", PortCondition::kAdminDown}, Word{"failed", PortCondition::kFailed}};
constexpr std::array kTransceivers = {Word{"usable", Transceiver::kUsable},
                                      Word{"absent", Transceiver::kAbsent},
                                      Word{"unsupported", Transceiver::kUnsupported}};

std::string a_kind(const toml::node& node) {
  std::ostringstream text;
  text << node.type();
  return text.str();
}

/** A table whose keys must all be known: each is asked for, and `finish` names one that was not. */
class Keys {
 public:
  explicit Keys(const toml::table& table) : table_(table) {}

  const toml::node* find(std::string_view key) {
    known_.emplace(key);
    return table_.get(key);
  }

  /** Null when the key is not there. */
  template <class Kind>
  const Kind* find_as(std::string_view key, const char* kind) {
    const toml::node* node = find(key);
    if (node == nullptr) return nullptr;
    const Kind* value = node->as<Kind>();
    if (value == nullptr) {
      throw Problem{node->source(), std::string(key) + " is " + a_kind(*node) + ", not " + kind};
    }
    return value;
  }

  void text(std::string_view key, std::string& value) {
    if (const auto* node = find_as<toml::value<std::string>>(key, "a text")) value = node->get();
  }

  void flag(std::string_view key, bool& value) {
    if (const auto* node = find_as<toml::value<bool>>(key, "true or false")) value = node->get();
  }

  template <class Number>
  void number(std::string_view key, std::int64_t least, std::int64_t most, Number& value) {
    const auto* node = find_as<toml::value<std::int64_t>>(key, "a whole number");
    if (node == nullptr) return;
    value = static_cast<Number>(checked(*node, key, least, most));
  }

  template <class Value, std::size_t Count>
  void word(std::string_view key, const std::array<Word<Value>, Count>& words, Value& value) {
    const auto* node = find_as<toml::value<std::string>>(key, "a text");
    if (node == nullptr) return;
    std::string choices;
    for (const Word<Value>& word : words) {
      if (word.name == node->get()) {
        value = word.value;
        return;
      }
      choices += (choices.empty() ? "" : ", ") + std::string(word.name);
    }
    throw Problem{node->source(),
                  std::string(key) + " is none of " + choices + ": " + quoted(node->get())};
  }

  static std::int64_t checked(const toml::value<std::int64_t>& node, std::string_view key,
                              std::int64_t least, std::int64_t most) {
    if (node.get() >= least && node.get() <= most) return node.get();
    throw Problem{node.source(), std::string(key) + " is " + std::to_string(node.get()) +
                                     ", not from " + std::to_string(least) + " to " +
                                     std::to_string(most)};
  }

  void require(std::string_view key) {
    if (find(key) == nullptr) throw Problem{table_.source(), std::string(key) + " is missing"};
  }

  void finish() const {
    for (const auto& [key, node] : table_) {
      if (known_.contains(key.str())) continue;
      std::string what = "unknown key " + quoted(key.str()) + "; there are";
      for (const std::string& known : known_) what += ' ' + known;
      throw Problem{key.source(), what};
    }
  }

 private:
  const toml::table& table_;
  std::set<std::string, std::less<>> known_;
};

void read_trunk(Keys& keys, VsanSet& vsans) {
  const auto* list = keys.find_as<toml::array>("trunk_vsans", "a list of VSANs");
  if (list == nullptr) return;
  vsans.reset();
  for (const toml::node& node : *list) {
    const auto* number = node.as_integer();
    if (number == nullptr) {
      throw Problem{node.source(), "a VSAN is " + a_kind(node) + ", not a whole number"};
    }
    vsans.set(static_cast<std::size_t>(Keys::checked(*number, "VSAN", 1, kLastVsan)));
  }
}

/** Changes what the table names and leaves the rest of the port. */
void read_port(Keys& keys, Port& port) {
  keys.word("mode", kModes, port.mode);
  keys.word("condition", kConditions, port.condition);
  keys.word("transceiver", kTransceivers, port.transceiver);
  keys.number("vsan", 1, kLastVsan, port.vsan);
  read_trunk(keys, port.trunk_vsans);
}

using PortNumbers = std::vector<std::uint32_t>;

/** "1-4, 17": ascending or not, from 1 to `most`. */
PortNumbers parse_ports(const toml::value<std::string>& node, std::uint32_t most) {
  const std::string_view text = node.get();
  const char* at = text.data();
  const char* end = at + text.size();
  PortNumbers ports;
  const auto refuse = [&](const std::string& why) {
    throw Problem{node.source(), "ports " + quoted(text) + ": " + why};
  };
  const auto blanks = [&] {
    while (at != end && *at == ' ') ++at;
  };
  const auto number = [&] {
    std::uint32_t value = 0;
    const auto result = std::from_chars(at, end, value);
    if (result.ec != std::errc{}) refuse("not of the form 1-4, 17");
    if (value == 0 || value > most) refuse("the ports are 1 to " + std::to_string(most));
    at = result.ptr;
    return value;
  };
  for (bool more = true; more;) {
    blanks();
    const std::uint32_t first = number();
    std::uint32_t last = first;
    if (at != end && *at == '-') {
      ++at;
      last = number();
    }
    if (last < first) refuse("a range that ends before it begins");
    for (std::uint32_t port = first; port <= last; ++port) ports.push_back(port);
    blanks();
    more = at != end;
    if (more && *at++ != ',') refuse("not of the form 1-4, 17");
  }
  return ports;
}

/** Calls `read(table)` for each table of a list of tables. */
template <class Read>
void each_table(Keys& keys, std::string_view key, Read read) {
  const auto* list = keys.find_as<toml::array>(key, "a list of tables");
  if (list == nullptr) return;
  for (const toml::node& node : *list) {
    const toml::table* table = node.as_table();
    if (table == nullptr) {
      throw Problem{node.source(), std::string(key) + " is " + a_kind(node) + ", not a table"};
    }
    read(*table);
  }
}

void read_some_ports(const toml::table& table, Module& module, std::set<std::uint32_t>& told) {
  Keys keys(table);
  keys.require("ports");
  const auto* ports = keys.find_as<toml::value<std::string>>("ports", "a text");
  for (const std::uint32_t number :
       parse_ports(*ports, static_cast<std::uint32_t>(module.ports.size()))) {
    if (!told.insert(number).second) {
      throw Problem{ports->source(),
                    "port " + std::to_string(number) + " of the module is described twice"};
    }
    read_port(keys, module.ports[number - 1]);
  }
  keys.finish();
}

void read_module(const toml::table& table, Chassis& chassis) {
  Keys keys(table);
  keys.require("slot");
  keys.require("ports");
  Module module{};
  keys.number("slot", 1, chassis.slots, module.slot);
  module.number = module.slot;
  keys.number("number", 1, kSlots, module.number);
  if (chassis.module_in_slot(module.slot) != nullptr) {
    throw Problem{keys.find("slot")->source(),
                  "slot " + std::to_string(module.slot) + " has a module already"};
  }
  if (chassis.module(module.number) != nullptr) {
    const toml::node* number = keys.find("number");
    throw Problem{(number != nullptr ? number : keys.find("slot"))->source(),
                  "there is a module " + std::to_string(module.number) + " already"};
  }
  keys.text("type", module.type);
  std::size_t ports = 0;
  keys.number("ports", 1, kPortsPerSlot, ports);
  Port common;
  read_port(keys, common);
  module.ports.assign(ports, common);
  std::set<std::uint32_t> told;
  each_table(keys, "port", [&](const toml::table& some) { read_some_ports(some, module, told); });
  keys.finish();
  chassis.modules.push_back(std::move(module));
}

void read_logical(const toml::table& table, InterfaceType type, Chassis& chassis) {
  Keys keys(table);
  keys.require("number");
  Interface interface { type, 0, 0 };
  keys.number("number", 1, kLogicalNumbers, interface.number);
  const if_index_t if_index = interface_index(interface);
  if (chassis.logical_ports.contains(if_index)) {
    throw Problem{keys.find("number")->source(), interface_name(if_index) + " is there already"};
  }
  Port port;
  read_port(keys, port);
  if (type == InterfaceType::kPortChannel) keys.flag("auto_created", port.auto_created);
  keys.finish();
  chassis.logical_ports.emplace(if_index, port);
}

Chassis read_table(const toml::table& table) {
  Keys keys(table);
  Chassis chassis;
  keys.text("name", chassis.name);
  keys.text("software_version", chassis.software_version);
  keys.text("model", chassis.model);
  keys.text("serial", chassis.serial);
  keys.require("slots");
  keys.number("slots", 1, kSlots, chassis.slots);
  keys.number("ficon_ports", 1, kMaxFiconPorts, chassis.ficon_ports);
  each_table(keys, "module", [&](const toml::table& module) { read_module(module, chassis); });
  each_table(keys, "port_channel", [&](const toml::table& port) {
    read_logical(port, InterfaceType::kPortChannel, chassis);
  });
  each_table(keys, "tunnel",
             [&](const toml::table& port) { read_logical(port, InterfaceType::kTunnel, chassis); });
  keys.finish();
  std::sort(chassis.modules.begin(), chassis.modules.end(),
            [](const Module& a, const Module& b) { return a.number < b.number; });
  if (chassis.logical_ports.size() > kLogicalNumbers) {
    throw Problem{table.source(), "more than " + std::to_string(kLogicalNumbers) +
                                      " port channels and tunnels together"};
  }
  return chassis;
}

std::string placed(const std::string& name, const toml::source_region& where,
                   std::string_view what) {
  return name + ':' + std::to_string(where.begin.line) + ':' + std::to_string(where.begin.column) +
         ": " + std::string(what);
}

bool is_ascii(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}

/**
 * Where a letter beyond ASCII stands outside of the lines that are comments; npos when nowhere.
 * The parser asks its tables whether such a letter is a blank; for many they have no answer, and
 * what it does then is undefined. In a string of several lines even a comment's line is none.
 */
std::size_t find_letter(std::string_view text) {
  const bool long_strings =
      text.find("\"\"\"") != std::string_view::npos || text.find("'''") != std::string_view::npos;
  constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
  std::size_t begin = text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
  while (begin < text.size()) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    const std::string_view line = text.substr(begin, end - begin);
    const std::size_t word = line.find_first_not_of(" \t");
    const bool comment = word != std::string_view::npos && line[word] == '#' && !long_strings;
    const auto letter = std::find_if_not(line.begin(), line.end(), is_ascii);
    if (!comment && letter != line.end()) {
      return begin + static_cast<std::size_t>(letter - line.begin());
    }
    begin = end + 1;
  }
  return std::string_view::npos;
}

/** Throws for what the parser must not see. */
void check_letters(std::string_view text) {
  const std::size_t at = find_letter(text);
  if (at == std::string_view::npos) return;
  const std::string_view before = text.substr(0, at);
  const auto line = std::count(before.begin(), before.end(), '\n');
  const std::size_t column = at - (before.rfind('\n') + 1);  // npos + 1 is the first line's 0
  toml::source_region where;
  where.begin = {static_cast<toml::source_index>(line + 1),
                 static_cast<toml::source_index>(column + 1)};
  throw Problem{where, "a letter beyond ASCII; only lines that are comments may have some"};
}

}  // namespace

std::optional<Chassis> read_chassis(std::string_view text, const std::string& name,
                                    std::string* error) {
  try {
    check_letters(text);
    return read_table(toml::parse(text, name));
  } catch (const toml::parse_error& broken) {
    *error = placed(name, broken.source(), broken.description());
    return std::nullopt;
  } catch (const Problem& problem) {
    *error = placed(name, problem.where, problem.what);
    return std::nullopt;
  }
}

std::optional<std::string> read_chassis_file(const std::string& path, std::string* error) {
  std::ifstream file(path, std::ios::binary);
  std::string text(kMaxFile + 1, '\0');
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (!file.is_open() || file.bad()) {
    *error = path + ": cannot be read";
    return std::nullopt;
  }
  text.resize(static_cast<std::size_t>(file.gcount()));
  if (text.size() > kMaxFile) {
    *error = path + ": larger than 1 MiB, which no description of a chassis is";
    return std::nullopt;
  }
  return text;
}

}  // namespace ficon::platform
