/**
 * Characters between code sets, byte for byte, through ICU's tables. Code set 1 is ASCII; an
 * EBCDIC page is known by its number. What a page lacks is a failed conversion, never a guess.
 */
#include <platform/ficon_base.h>
#include <unicode/ucnv.h>

#include <array>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "wire/code_set.h"

namespace {

constexpr std::int32_t kConverted = 1;  // the converter alone answers nonzero for success
constexpr std::int32_t kFailed = 0;
constexpr std::uint32_t kBadCharacter = 84;  // EILSEQ

/** The Unicode character of each byte of a code set; none for a byte that has no character. */
using Page = std::array<std::optional<char16_t>, 256>;

Page ascii_page() {
  Page page;
  for (std::size_t byte = 0; byte < 0x80; ++byte) page[byte] = static_cast<char16_t>(byte);
  return page;
}

struct CloseConverter {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, CloseConverter>;

std::optional<char16_t> character_of(UConverter* converter, char byte) {
  UErrorCode error = U_ZERO_ERROR;
  UChar character[2];
  const std::int32_t length = ucnv_toUChars(converter, character, 2, &byte, 1, &error);
  if (U_FAILURE(error) || length != 1 || character[0] == 0xfffd) return std::nullopt;
  return character[0];
}

std::optional<Page> load_page(std::uint32_t number) {
  if (number == ficon::wire::kAsciiCodeSet) return ascii_page();
  char name[32];
  std::snprintf(name, sizeof name, number < 1000 ? "ibm-%03u" : "ibm-%u", number);
  UErrorCode error = U_ZERO_ERROR;
  const Converter converter(ucnv_open(name, &error));
  if (U_FAILURE(error) || ucnv_getMaxCharSize(converter.get()) != 1) return std::nullopt;
  Page page;
  for (std::size_t byte = 0; byte < page.size(); ++byte) {
    page[byte] = character_of(converter.get(), static_cast<char>(byte));
  }
  return page;
}

/** Pages are looked up once a process; a page that does not exist is remembered too. */
const std::optional<Page>& page_of(std::uint32_t number) {
  static std::mutex mutex;
  static std::map<std::uint32_t, std::optional<Page>> pages;
  const std::lock_guard guard(mutex);
  const auto known = pages.find(number);
  return known != pages.end() ? known->second
                              : pages.emplace(number, load_page(number)).first->second;
}

std::optional<std::uint8_t> byte_of(const Page& page, char16_t character) {
  for (std::size_t byte = 0; byte < page.size(); ++byte) {
    if (page[byte] == character) return static_cast<std::uint8_t>(byte);
  }
  return std::nullopt;
}

/** What becomes of each byte of one code set in another. */
using Table = std::array<std::optional<std::uint8_t>, 256>;

Table build_table(const Page& from, const Page& to) {
  Table table;
  for (std::size_t byte = 0; byte < table.size(); ++byte) {
    if (from[byte]) table[byte] = byte_of(to, *from[byte]);
  }
  return table;
}

/** Tables are built once a process: names by the hundred are converted through the same one. */
const Table* table_of(std::uint32_t from, std::uint32_t to) {
  static std::mutex mutex;
  static std::map<std::pair<std::uint32_t, std::uint32_t>, Table> tables;
  const std::lock_guard guard(mutex);
  const auto known = tables.find({from, to});
  if (known != tables.end()) return &known->second;
  const auto& from_page = page_of(from);
  const auto& to_page = page_of(to);
  if (!from_page || !to_page) return nullptr;
  return &tables.emplace(std::pair(from, to), build_table(*from_page, *to_page)).first->second;
}

std::int32_t convert(const std::uint8_t* input, std::uint32_t input_length,
                     std::uint32_t from_code_set, std::uint8_t** out_cursor,
                     std::uint32_t* out_count, std::uint32_t* out_space,
                     std::uint32_t to_code_set) {
  const Table* table = table_of(from_code_set, to_code_set);
  if (table == nullptr || input_length > *out_space) return kFailed;
  std::uint8_t* const out = *out_cursor;
  std::uint32_t converted = 0;
  while (converted < input_length) {
    const std::optional<std::uint8_t> byte = (*table)[input[converted]];
    if (!byte) break;
    out[converted++] = *byte;
  }
  *out_cursor += converted;
  *out_count += converted;
  *out_space -= converted;
  return converted == input_length ? kConverted : kFailed;
}

}  // namespace

ficon_convert_fn_t ficon_get_convert_fn_ptr(void) {
  return convert;
}

uint32_t convert_codepage(uint32_t from_code_set, uint32_t to_code_set, uint8_t* text,
                          uint32_t length) {
  const Table* table = table_of(from_code_set, to_code_set);
  if (table == nullptr) return kBadCharacter;
  for (std::uint32_t i = 0; i < length; ++i) {
    if (!(*table)[text[i]]) return kBadCharacter;  // before any of it is changed
  }
  for (std::uint32_t i = 0; i < length; ++i) text[i] = *(*table)[text[i]];
  return 0;
}
