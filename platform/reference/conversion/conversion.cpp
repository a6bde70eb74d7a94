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

namespace {

constexpr std::uint32_t kAscii = 1;
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
  if (number == kAscii) return ascii_page();
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

std::optional<std::uint8_t> convert_byte(const Page& from, const Page& to, std::uint8_t byte) {
  const std::optional<char16_t> character = from[byte];
  return character ? byte_of(to, *character) : std::nullopt;
}

std::int32_t convert(const std::uint8_t* input, std::uint32_t input_length,
                     std::uint32_t from_code_set, std::uint8_t** out_cursor,
                     std::uint32_t* out_count, std::uint32_t* out_space,
                     std::uint32_t to_code_set) {
  const auto& from = page_of(from_code_set);
  const auto& to = page_of(to_code_set);
  if (!from || !to || input_length > *out_space) return kFailed;
  for (std::uint32_t i = 0; i < input_length; ++i) {
    const auto byte = convert_byte(*from, *to, input[i]);
    if (!byte) return kFailed;
    *(*out_cursor)++ = *byte;
    ++*out_count;
    --*out_space;
  }
  return kConverted;
}

}  // namespace

ficon_convert_fn_t ficon_get_convert_fn_ptr(void) {
  return convert;
}

uint32_t convert_codepage(uint32_t from_code_set, uint32_t to_code_set, uint8_t* text,
                          uint32_t length) {
  const auto& from = page_of(from_code_set);
  const auto& to = page_of(to_code_set);
  if (!from || !to) return kBadCharacter;
  for (std::uint32_t i = 0; i < length; ++i) {
    if (!convert_byte(*from, *to, text[i])) return kBadCharacter;  // before any of it is changed
  }
  for (std::uint32_t i = 0; i < length; ++i) text[i] = *convert_byte(*from, *to, text[i]);
  return 0;
}
