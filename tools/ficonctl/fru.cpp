/** `ficonctl fru`: the field-replaceable units that FICON knows. */
#include <algorithm>

#include "command.h"
#include "wire/code_set.h"

namespace ficon::ctl {
namespace {

constexpr std::size_t kRows = 32;
constexpr std::size_t kRowSize = 8;
constexpr std::size_t kNameSize = kRowSize - 1;
constexpr std::uint32_t kEbcdic = 37;

void list(Context& context) {
  std::uint8_t buffer[kRows * kRowSize];
  ficon_get_list_of_ficon_fru(buffer);
  Json json = Json::array();
  Table table({"ROW", "NAME"});
  for (std::size_t row = 1; row < kRows; ++row) {
    const std::uint8_t* entry = buffer + row * kRowSize;
    const std::size_t length = std::min<std::size_t>(entry[0], kNameSize);
    std::string name(length, ' ');
    convert_codepage_and_copy(kEbcdic, wire::kAsciiCodeSet, entry + 1,
                              reinterpret_cast<std::uint8_t*>(name.data()),
                              static_cast<std::uint32_t>(length));
    json.push_back({{"row", row}, {"name", name}});
    table.add({std::to_string(row), name});
  }
  context.output.show(json, table);
}

}  // namespace

void register_fru(CLI::App& app, Context& context) {
  CLI::App& object = add_object(app, "fru", "Field-replaceable units");
  add_action(object, "list", "List the names that FICON reports units by",
             [&context] { list(context); });
}

}  // namespace ficon::ctl
