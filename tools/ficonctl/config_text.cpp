#include "config_text.h"

#include <unistd.h>

#include <algorithm>
#include <optional>
#include <sstream>

#include "acfg/text_service.h"
#include "chassis/current_chassis.h"
#include "configuration/configuration.h"
#include "interface_index/interface_index.h"
#include "parse.h"
#include "port_table.h"
#include "wire/saved_config.h"

namespace ficon::ctl {
namespace {

std::string store_path(Session& session) {
  std::string path;
  if (const auto status = platform::get_store_path(session.handle(), session.wait(), &path)) {
    throw session.failure(status, "cannot learn where the configuration is stored");
  }
  return path;
}

std::string generate(Session& session, const std::string& store, const TextScope& scope) {
  platform::TextRequest request;
  request.config_prefix = store;
  request.debug_prefix = store;
  request.vsans = scope.vsans;
  request.interfaces =
      scope.interfaces.empty() ? platform::current_chassis()->interfaces() : scope.interfaces;
  if (const auto status = ficon_startup_acfg_gen(request.request(), request.context())) {
    throw session.failure(status, "cannot generate the configuration");
  }
  return request.text.value_or("");
}

std::string join(const std::vector<std::uint32_t>& numbers) {
  std::string text;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    std::size_t last = i;
    while (last + 1 < numbers.size() && numbers[last + 1] == numbers[last] + 1) ++last;
    if (!text.empty()) text += ", ";
    text += std::to_string(numbers[i]);
    if (last != i) text += "-" + std::to_string(numbers[last]);
    i = last;
  }
  return text;
}

std::string hex_text(std::uint32_t value) {
  char text[16];
  std::snprintf(text, sizeof text, "%#x", value);
  return text;
}

using Words = std::vector<std::string>;

Words words_of(const std::string& line) {
  std::istringstream stream(line);
  Words words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

/** What follows `beginning` word for word, or nothing. */
std::optional<Words> behind(const Words& words, const Words& beginning) {
  if (words.size() < beginning.size()) return std::nullopt;
  if (!std::equal(beginning.begin(), beginning.end(), words.begin())) return std::nullopt;
  return Words(words.begin() + static_cast<std::ptrdiff_t>(beginning.size()), words.end());
}

std::uint32_t only_number(const Words& rest, std::uint32_t first, std::uint32_t last,
                          const std::string& what) {
  if (rest.size() != 1) throw UsageError("expected one " + what);
  return parse_number(rest[0], first, last, what);
}

/** `1-3, 5` and `1,2,3,5` and hexadecimal alike; a last word `force` is let pass. */
std::vector<std::uint32_t> port_numbers(Words rest) {
  if (!rest.empty() && rest.back() == "force") rest.pop_back();
  std::string list;
  for (const std::string& word : rest) list += word;
  if (list.empty()) return {};
  return expand(parse_ranges(list, "port numbers", [](const std::string& part) {
    return parse_number(part, 0, 1279, "port number");
  }));
}

constexpr std::uint32_t kSlots = 16;
constexpr std::uint32_t kNoPortNumber = 512;

using Kind = ConfigLine::Kind;

/** `[no] ficon slot S assign port-numbers LIST` and the same of the logical ports. */
std::optional<ConfigLine> parse_assignment(const Words& words, bool negated) {
  if (const auto rest = behind(words, {"ficon", "logical-port", "assign", "port-numbers"})) {
    return ConfigLine{.kind = negated ? Kind::kNoLogicalNumbers : Kind::kLogicalNumbers,
                      .numbers = port_numbers(*rest)};
  }
  const auto slot = behind(words, {"ficon", "slot"});
  if (!slot || slot->empty()) return std::nullopt;
  const auto rest = behind(*slot, {slot->front(), "assign", "port-numbers"});
  if (!rest) return std::nullopt;
  return ConfigLine{.kind = negated ? Kind::kNoSlotNumbers : Kind::kSlotNumbers,
                    .value = parse_number(slot->front(), 1, kSlots, "slot"),
                    .numbers = port_numbers(*rest)};
}

std::optional<ConfigLine> parse_global(const Words& words) {
  if (words == Words{"feature", "ficon"}) return ConfigLine{.kind = Kind::kFeature};
  if (words == Words{"ficon", "port", "default-state", "prohibit-all"}) {
    return ConfigLine{.kind = Kind::kDefaultProhibit};
  }
  if (const auto rest = behind(words, {"ficon", "vsan"})) {
    return ConfigLine{.kind = Kind::kVsan, .value = only_number(*rest, 1, kLastVsan, "VSAN")};
  }
  if (const auto rest = behind(words, {"ficon", "default", "mihpto"})) {
    const std::uint32_t seconds = only_number(*rest, 1, 63000, "time-out");
    encode_mih_timeout(seconds);
    return ConfigLine{.kind = Kind::kMihTimeout, .value = seconds};
  }
  if (const auto rest = behind(words, {"logging", "level", "ficon"})) {
    return ConfigLine{.kind = Kind::kLoggingLevel,
                      .value = only_number(*rest, 0, 7, "logging level")};
  }
  if (const auto rest = behind(words, {"no"})) return parse_assignment(*rest, true);
  return parse_assignment(words, false);
}

std::optional<ConfigLine> parse_below_interface(const Words& words, if_index_t if_index) {
  if (const auto rest = behind(words, {"ficon", "portnumber"})) {
    return ConfigLine{.kind = Kind::kPortNumber,
                      .value = only_number(*rest, 0, kNoPortNumber, "port number"),
                      .if_index = if_index};
  }
  if (const auto rest = behind(words, {"ficon", "portaddress"})) {
    return ConfigLine{.kind = Kind::kPortAddress,
                      .value = only_number(*rest, 0, kNoPortNumber, "port address"),
                      .if_index = if_index};
  }
  return std::nullopt;
}

/** The reader's place: which line, and below which interface. */
struct Reader {
  if_index_t if_index = 0;

  std::optional<ConfigLine> read(const std::string& line) {
    const Words words = words_of(line);
    if (words.empty() || words[0][0] == '!' || words[0][0] == '#') return std::nullopt;
    if (words[0] == "interface") {
      const std::string name = line.substr(line.find("interface") + 9);
      const std::size_t begin = name.find_first_not_of(' ');
      const auto found = platform::parse_interface(
          begin == std::string::npos
              ? ""
              : name.substr(begin, name.find_last_not_of(" \r") + 1 - begin));
      if (!found) throw UsageError("there is no interface \"" + name + "\"");
      if_index = *found;
      return std::nullopt;
    }
    if (if_index != 0) {
      if (auto below = parse_below_interface(words, if_index)) return below;
    } else if (words.size() == 3 && words[0] == "ficon" &&
               (words[1] == "portnumber" || words[1] == "portaddress")) {
      throw UsageError("this line belongs below an interface");
    }
    auto global = parse_global(words);
    if (!global) throw UsageError("this is no line of FICON's configuration");
    if_index = 0;
    return global;
  }
};

}  // namespace

std::string ConfigLine::text() const {
  switch (kind) {
    case Kind::kFeature:
      return "feature ficon";
    case Kind::kVsan:
      return "ficon vsan " + std::to_string(value);
    case Kind::kDefaultProhibit:
      return "ficon port default-state prohibit-all";
    case Kind::kMihTimeout:
      return "ficon default mihpto " + std::to_string(value);
    case Kind::kSlotNumbers:
      return "ficon slot " + std::to_string(value) + " assign port-numbers " + join(numbers) +
             " force";
    case Kind::kNoSlotNumbers:
      return "no ficon slot " + std::to_string(value) + " assign port-numbers";
    case Kind::kLogicalNumbers:
      return "ficon logical-port assign port-numbers " + join(numbers) + " force";
    case Kind::kNoLogicalNumbers:
      return "no ficon logical-port assign port-numbers " + join(numbers);
    case Kind::kPortNumber:
      return "interface " + platform::interface_name(if_index) + ": ficon portnumber " +
             hex_text(value);
    case Kind::kPortAddress:
      return "interface " + platform::interface_name(if_index) + ": ficon portaddress " +
             hex_text(value);
    case Kind::kLoggingLevel:
      return "logging level ficon " + std::to_string(value);
  }
  return "";
}

std::uint32_t encode_mih_timeout(std::uint32_t seconds) {
  for (std::uint32_t encoded = 0xff; encoded > 0; --encoded) {
    if (wire::decode_mih_timeout(encoded) == seconds && seconds != 0) return encoded;
  }
  throw UsageError("time-out \"" + std::to_string(seconds) +
                   "\" is not 1 to 63 times 1, 10, 100 or 1000 seconds");
}

std::vector<ConfigLine> parse_config(const std::string& text) {
  std::vector<ConfigLine> lines;
  std::string complaints;
  std::istringstream stream(text);
  Reader reader;
  std::size_t number = 0;
  for (std::string line; std::getline(stream, line);) {
    ++number;
    try {
      if (auto read = reader.read(line)) {
        read->line = number;
        lines.push_back(*std::move(read));
      }
    } catch (const UsageError& error) {
      complaints += "\n  line " + std::to_string(number) + ": " + error.what();
    }
  }
  if (!complaints.empty()) throw UsageError("nothing was applied:" + complaints);
  return lines;
}

std::string running_text(Session& session, const TextScope& scope) {
  return generate(session, store_path(session), scope);
}

std::string startup_text(Session& session, const TextScope& scope) {
  const std::string store = platform::startup_store(store_path(session));
  if (access(store.c_str(), R_OK) != 0) {
    throw Failure(0, "no-startup", "no configuration was saved yet",
                  "ficonctl config save makes the running configuration the startup one");
  }
  return generate(session, store, scope);
}

}  // namespace ficon::ctl
