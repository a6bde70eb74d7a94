#include "files/file_name.h"

namespace ficon {

Status prepare_name(bool is_ascii, std::uint32_t codepage, char* name, wire::FileNameField* field) {
  if (!is_ascii) {
    __builtin_memcpy(field->raw, name, sizeof field->raw);
    return status::kOk;
  }
  if (const Status refused = convert_ascii_filename_to_ebcdic(codepage, name, field->raw)) {
    return refused;
  }
  return validate_ebcidic_filename(field->raw, sizeof field->raw);
}

}  // namespace ficon
