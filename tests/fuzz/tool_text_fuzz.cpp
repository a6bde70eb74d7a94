/**
 * Everything that the tool reads as text: configuration lines, files as JSON, ranges, interface
 * names. Refused with a sentence, or understood, and then written and read again the same.
 */
#include "config_line.h"
#include "file_text.h"
#include "input.h"
#include "mapped_ports.h"
#include "parse.h"

using namespace ficon::fuzz;
using namespace ficon::ctl;

namespace {

void read_configuration(const std::string& text) {
  for (const ConfigLine& line : parse_config(text, 255)) {
    const std::string written = line.text();
    if (line.if_index != 0) continue;  // written with its interface in front, for people
    const auto again = parse_config(written, 255);
    require(again.size() == 1 && again[0].text() == written, "a line reads as it is written");
  }
}

void read_file(const std::string& text) {
  const std::string written = file_to_json(file_from_json(text)).dump();
  require(file_to_json(file_from_json(written)).dump() == written, "a file reads as it is written");
}

void read_ranges(const std::string& text) {
  constexpr std::uint32_t kLast = 2000;
  const auto numbers = expand(parse_ranges(text, "numbers", [](const std::string& part) {
    return parse_number(part, 1, kLast, "number");
  }));
  require(!numbers.empty() && numbers.back() <= kLast, "ranges keep to their bounds");
  require(std::ranges::is_sorted(numbers), "numbers are in order");
}

void read_words(const std::string& text) {
  const if_index_t if_index = parse_interface_name(text);
  require(parse_interface_name(interface_text(if_index)) == if_index,
          "an interface reads as it is written");
}

void read_settings(const std::string& text) {
  const auto [field, value] = ficon::ctl::parse_assignment(text);
  require(field.size() + value.size() + 1 == text.size(), "nothing is lost of a setting");
  parse_hex(value, 0xffffff, "value");
}

constexpr void (*kReaders[])(const std::string&) = {read_configuration, read_file, read_ranges,
                                                    read_words, read_settings};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input({data, size});
  const auto reader = kReaders[input.u8() % std::size(kReaders)];
  try {
    reader(text_of(input.rest()));
  } catch (const UsageError& error) {
    require(*error.what() != '\0', "a refusal says why");
  }
  return 0;
}
