/** Names between ASCII and EBCDIC: fixed widths, blanks behind, and the rules for file names. */
#include <ficon_cmi.h>
#include <platform/ficon_base.h>

#include <cctype>
#include <cstring>

#include "exchange/console.h"
#include "wire/code_set.h"
#include "wire/status.h"

using namespace ficon;

const char* program_name = "ascii_ebcdic_convert";

namespace {

constexpr std::uint8_t kEbcdicBlank = 0x40;
constexpr std::uint32_t kFileNameLength = 8;
constexpr std::uint32_t kPortNameLength = 24;
constexpr std::uint32_t kLargestPortAddress = 255;

/** What the converter produced, in the room that it is always given. */
struct Converted {
  std::uint8_t bytes[100];
  std::uint32_t count;
};

/** False after a printed line: the converter could not be had. */
bool has_converter(ficon_convert_fn_t converter) {
  if (converter == nullptr) console("unable to link to char_convert library\n");
  return converter != nullptr;
}

bool convert(ficon_convert_fn_t converter, const void* text, std::uint32_t length,
             std::uint32_t from, std::uint32_t to, Converted* result) {
  std::uint8_t* cursor = result->bytes;
  std::uint32_t room = sizeof result->bytes;
  result->count = 0;
  return converter(static_cast<const std::uint8_t*>(text), length, from, &cursor, &result->count,
                   &room, to) != 0;
}

/** As `convert`, for names: as many bytes come out as went in. */
bool convert_exactly(ficon_convert_fn_t converter, const void* text, std::uint32_t length,
                     std::uint32_t from, std::uint32_t to, Converted* result) {
  return convert(converter, text, length, from, to, result) && result->count == length;
}

/** An ASCII name of `length` characters into a field of `width`, blanks behind. */
Status convert_name(ficon_convert_fn_t converter, std::uint32_t codepage, const char* name,
                    std::uint32_t length, std::uint8_t* field, std::uint32_t width) {
  Converted converted;
  if (!convert_exactly(converter, name, length, wire::kAsciiCodeSet, codepage, &converted)) {
    return status::kConversionFailed;
  }
  std::memcpy(field, converted.bytes, length);
  std::memset(field + length, kEbcdicBlank, width - length);
  return status::kOk;
}

/** A field of `length` characters as ASCII; zeros where the converter refuses it. */
Status field_to_ascii(std::uint32_t codepage, const std::uint8_t* field, std::uint32_t length,
                      char* ascii_out) {
  const ficon_convert_fn_t converter = ficon_get_convert_fn_ptr();
  if (!has_converter(converter)) return status::kConversionFailed;
  std::memset(ascii_out, 0, length);
  Converted converted;
  if (!convert_exactly(converter, field, length, codepage, wire::kAsciiCodeSet, &converted)) {
    return status::kConversionFailed;
  }
  std::memcpy(ascii_out, converted.bytes, length);
  return status::kOk;
}

/** Capital letters, digits, hyphen, underscore, blank. Lower case is refused: intended. */
bool is_file_name_character(std::uint8_t c) {
  return (c >= 0xc1 && c <= 0xc9) || (c >= 0xd1 && c <= 0xd9) || (c >= 0xe2 && c <= 0xe9) ||
         (c >= 0xf0 && c <= 0xf9) || c == 0x60 || c == 0x6d || c == kEbcdicBlank;
}

/** Puts a double quote in the place of every byte that no terminal shows. */
bool replace_unprintables(char* text) {
  bool replaced = false;
  for (std::uint32_t i = 0; i < kPortNameLength; ++i) {
    const auto character = static_cast<unsigned char>(text[i]);
    if (character < 0x80 && std::isprint(character) != 0) continue;
    text[i] = '"';
    replaced = true;
  }
  return replaced;
}

/** "~" and the first of the address's two digits: the second finds no room, as is intended. */
void mark(char* name, std::uint32_t port_address) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  name[21] = '~';
  name[22] = kDigits[port_address >> 4];
  name[23] = '\0';
}

}  // namespace

uint32_t validate_ebcidic_filename(const uint8_t* name, int32_t length) {
  if (length > static_cast<int32_t>(kFileNameLength)) return status::kNameTooLong;
  if (name[0] == kEbcdicBlank) return status::kNameBeginsWithSpace;  // also of length 0: intended
  for (int32_t i = 0; i < length; ++i) {
    if (!is_file_name_character(name[i])) return status::kNameCharacter;
  }
  return status::kOk;
}

uint32_t validate_ebcidic_filedesc(const uint8_t* desc, int32_t length) {
  for (int32_t i = 0; i < length; ++i) {
    if (desc[i] < 0x40 || desc[i] > 0xfe) return status::kDescriptionCharacter;
  }
  return status::kOk;
}

uint32_t convert_ebcdic_filename_to_ascii(uint32_t codepage, const uint8_t* ebcdic_name,
                                          char* ascii_out) {
  return field_to_ascii(codepage, ebcdic_name, kFileNameLength, ascii_out);
}

uint32_t convert_ascii_filename_to_ebcdic(uint32_t codepage, char* ascii_name,
                                          uint8_t* ebcdic_out) {
  const std::size_t length = std::strlen(ascii_name);
  const ficon_convert_fn_t converter = ficon_get_convert_fn_ptr();
  if (length > kFileNameLength) return status::kNameTooLong;
  if (!has_converter(converter)) return status::kConversionFailed;
  for (char* c = ascii_name; *c != '\0'; ++c) {
    const auto character = static_cast<unsigned char>(*c);
    // in the caller's own buffer: callers show the name as it was stored
    if (std::islower(character) != 0) *c = static_cast<char>(std::toupper(character));
  }
  std::memset(ebcdic_out, 0, length);
  return convert_name(converter, codepage, ascii_name, static_cast<std::uint32_t>(length),
                      ebcdic_out, kFileNameLength);
}

uint32_t convert_ebcdic_portname_to_ascii(uint32_t codepage, const uint8_t* ebcdic_name,
                                          char* ascii_out, uint32_t port_address) {
  if (const Status failed = field_to_ascii(codepage, ebcdic_name, kPortNameLength, ascii_out)) {
    return failed;
  }
  if (!replace_unprintables(ascii_out)) return status::kOk;
  if (port_address > kLargestPortAddress) return status::kPortAddressTooLarge;
  mark(ascii_out, port_address);
  return status::kOk;
}

uint32_t convert_ascii_portname_to_ebcdic(uint32_t codepage, const char* ascii_name,
                                          uint8_t* ebcdic_out) {
  const auto length = static_cast<std::uint32_t>(strnlen(ascii_name, kPortNameLength));
  std::memset(ebcdic_out, 0, length);
  const ficon_convert_fn_t converter = ficon_get_convert_fn_ptr();
  if (!has_converter(converter)) return status::kConversionFailed;
  return convert_name(converter, codepage, ascii_name, length, ebcdic_out, kPortNameLength);
}

uint32_t convert_codepage_and_copy(uint32_t from_code_set, uint32_t to_code_set,
                                   const uint8_t* input, uint8_t* output, uint32_t length) {
  const ficon_convert_fn_t converter = ficon_get_convert_fn_ptr();
  Converted converted;
  if (length > sizeof converted.bytes) return status::kInvalidPayload;
  if (!has_converter(converter)) return status::kConversionFailed;
  if (!convert(converter, input, length, from_code_set, to_code_set, &converted)) {
    return status::kConversionFailed;
  }
  const std::uint32_t produced =
      converted.count < sizeof converted.bytes ? converted.count : sizeof converted.bytes;
  std::memcpy(output, converted.bytes, produced);
  return status::kOk;
}
