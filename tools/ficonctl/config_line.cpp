#include "config_line.h"

#include <algorithm>
#include <optional>
#include <sstream>

#include "interface_index/interface_index.h"
#include "mapped_ports.h"
#include "mih_timeout.h"
#include "parse.h"
#include "port_plan.h"
#include "wire/port_plan.h"

namespace ficon::ctl {
namespace {

using Kind = ConfigLine::Kind;
using Words = std::vector<std::string>;

constexpr std::uint32_t kHighestLevel = 7;

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
std::vector<std::uint32_t> port_numbers(Words rest, std::uint32_t largest) {
  if (!rest.empty() && rest.back() == "force") rest.pop_back();
  std::string list;
  for (const std::string& word : rest) list += word;
  if (list.empty()) return {};
  std::vector<std::uint32_t> numbers;
  const auto ranges = parse_ranges(list, "port numbers", [&](const std::string& part) {
    return parse_number(part, 0, largest, "port number");
  });
  for (const NumberRange& range : ranges) {
    for (std::uint32_t n = range.first; n <= range.last; ++n) {
      if (std::ranges::find(numbers, n) != numbers.end()) {
        throw UsageError("port number " + std::to_string(n) + " stands twice");
      }
      numbers.push_back(n);
    }
  }
  return numbers;
}

/** Without numbers, only what takes numbers away makes sense. */
ConfigLine assignment(Kind kind, std::uint32_t slot, std::vector<std::uint32_t> numbers) {
  ConfigLine line{.kind = kind, .value = slot, .numbers = std::move(numbers)};
  const bool takes = kind == Kind::kSlotNumbers || kind == Kind::kLogicalNumbers;
  if (takes && line.numbers.empty()) throw UsageError("expected port numbers");
  if (kind == Kind::kNoSlotNumbers && !line.numbers.empty()) {
    throw UsageError("a slot loses all of its port numbers: none are named");
  }
  return line;
}

/** `[no] ficon slot S assign port-numbers LIST` and the same of the logical ports. */
std::optional<ConfigLine> parse_assignment(const Words& words, bool negated,
                                           std::uint32_t largest) {
  if (const auto rest = behind(words, {"ficon", "logical-port", "assign", "port-numbers"})) {
    return assignment(negated ? Kind::kNoLogicalNumbers : Kind::kLogicalNumbers, 0,
                      port_numbers(*rest, largest));
  }
  const auto slot = behind(words, {"ficon", "slot"});
  if (!slot || slot->empty()) return std::nullopt;
  const auto rest = behind(*slot, {slot->front(), "assign", "port-numbers"});
  if (!rest) return std::nullopt;
  return assignment(negated ? Kind::kNoSlotNumbers : Kind::kSlotNumbers,
                    parse_number(slot->front(), 1, platform::kSlots, "slot"),
                    port_numbers(*rest, largest));
}

std::optional<ConfigLine> parse_global(const Words& words, std::uint32_t largest) {
  if (words == Words{"feature", "ficon"}) return ConfigLine{.kind = Kind::kFeature};
  if (words == Words{"ficon", "port", "default-state", "prohibit-all"}) {
    return ConfigLine{.kind = Kind::kDefaultProhibit};
  }
  if (const auto rest = behind(words, {"ficon", "vsan"})) {
    return ConfigLine{.kind = Kind::kVsan,
                      .value = only_number(*rest, kFirstVsan, kLastVsan, "VSAN")};
  }
  if (const auto rest = behind(words, {"ficon", "default", "mihpto"})) {
    const std::uint32_t seconds = only_number(*rest, 1, kLongestTimeout, "time-out");
    encode_mih_timeout(seconds);
    return ConfigLine{.kind = Kind::kMihTimeout, .value = seconds};
  }
  if (const auto rest = behind(words, {"logging", "level", "ficon"})) {
    return ConfigLine{.kind = Kind::kLoggingLevel,
                      .value = only_number(*rest, 0, kHighestLevel, "logging level")};
  }
  if (const auto rest = behind(words, {"no"})) return parse_assignment(*rest, true, largest);
  return parse_assignment(words, false, largest);
}

std::optional<ConfigLine> parse_below_interface(const Words& words, if_index_t if_index,
                                                std::uint32_t largest) {
  if (const auto rest = behind(words, {"ficon", "portnumber"})) {
    return ConfigLine{.kind = Kind::kPortNumber,
                      .value = only_number(*rest, 0, largest, "port number"),
                      .if_index = if_index};
  }
  if (const auto rest = behind(words, {"ficon", "portaddress"})) {
    // The generator writes this number, 0x200, where a port has no address.
    const bool none =
        *rest == Words{hex(wire::kNoPort, 3)} || *rest == Words{std::to_string(wire::kNoPort)};
    return ConfigLine{
        .kind = Kind::kPortAddress,
        .value = none ? wire::kNoPort : only_number(*rest, 0, kLastPortAddress, "port address"),
        .if_index = if_index};
  }
  return std::nullopt;
}

/** The reader's place: below which interface. */
class Reader {
 public:
  explicit Reader(std::uint32_t largest_port_number) : largest_(largest_port_number) {}

  std::optional<ConfigLine> read(const std::string& line) {
    const Words words = words_of(line);
    if (words.empty() || words[0][0] == '!' || words[0][0] == '#') return std::nullopt;
    if (const auto name = behind(words, {"interface"})) {
      enter(*name);
      return std::nullopt;
    }
    if (auto below = parse_below_interface(words, if_index_, largest_)) {
      if (!inside_) throw UsageError("this line belongs below an interface");
      if (if_index_ == 0) return std::nullopt;  // that it has no name is complained of already
      return below;
    }
    auto global = parse_global(words, largest_);
    if (!global) throw UsageError("this is no line of FICON's configuration");
    inside_ = false;
    return global;
  }

 private:
  void enter(const Words& words) {
    std::string name;
    for (const std::string& word : words) name += word;
    inside_ = true;
    if_index_ = 0;
    if_index_ = parse_interface_name(name);
  }

  std::uint32_t largest_;
  bool inside_ = false;
  if_index_t if_index_ = 0;
};

std::string join(const std::vector<std::uint32_t>& numbers) {
  std::string text;
  for (const NumberRange& range : ranges_of(numbers)) {
    if (!text.empty()) text += ", ";
    text += std::to_string(range.first);
    if (range.last != range.first) text += "-" + std::to_string(range.last);
  }
  return text;
}

std::string below(if_index_t if_index, const char* what, std::uint32_t value) {
  char number[16];
  std::snprintf(number, sizeof number, "%#x", value);
  return "interface " + platform::interface_name(if_index) + ": ficon " + what + " " + number;
}

}  // namespace

std::string ConfigLine::text() const {
  const std::string number = std::to_string(value);
  switch (kind) {
    case Kind::kFeature:
      return "feature ficon";
    case Kind::kVsan:
      return "ficon vsan " + number;
    case Kind::kDefaultProhibit:
      return "ficon port default-state prohibit-all";
    case Kind::kMihTimeout:
      return "ficon default mihpto " + number;
    case Kind::kSlotNumbers:
      return "ficon slot " + number + " assign port-numbers " + join(numbers) + " force";
    case Kind::kNoSlotNumbers:
      return "no ficon slot " + number + " assign port-numbers";
    case Kind::kLogicalNumbers:
      return "ficon logical-port assign port-numbers " + join(numbers) + " force";
    case Kind::kNoLogicalNumbers:
      return "no ficon logical-port assign port-numbers " + join(numbers);
    case Kind::kPortNumber:
      return below(if_index, "portnumber", value);
    case Kind::kPortAddress:
      return below(if_index, "portaddress", value);
    case Kind::kLoggingLevel:
      return "logging level ficon " + number;
  }
  return "";
}

void Complaints::settle() const {
  if (!text_.empty()) throw UsageError("nothing was applied:" + text_);
}

std::vector<ConfigLine> parse_config(const std::string& text, std::uint32_t largest_port_number) {
  std::vector<ConfigLine> lines;
  Complaints complaints;
  std::istringstream stream(text);
  Reader reader(largest_port_number);
  std::size_t number = 0;
  for (std::string line; std::getline(stream, line);) {
    ++number;
    try {
      if (auto read = reader.read(line)) {
        read->line = number;
        lines.push_back(*std::move(read));
      }
    } catch (const UsageError& error) {
      complaints.add(number, error.what());
    }
  }
  complaints.settle();
  return lines;
}

}  // namespace ficon::ctl
