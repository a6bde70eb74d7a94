/** Names in file requests: ASCII that is converted and checked, or 8 bytes as they are. */
#pragma once

#include <ficon_cmi.h>

#include "exchange/caller.h"
#include "wire/file_request.h"
#include "wire/status.h"

namespace ficon {

/** The value of a `convert` argument that asks for conversion; any other means raw bytes. */
inline constexpr std::uint32_t kConvert = 1;

/** The requesters whose names come in ASCII where no `convert` argument says so. */
inline bool names_are_ascii(std::uint32_t requester) {
  return requester - 1 <= 1;
}

/** Fills the field; a name that cannot be converted or is not allowed is refused. */
Status prepare_name(bool is_ascii, std::uint32_t codepage, char* name, wire::FileNameField* field);

/** The code page of a VSAN, 0 when it cannot be had. */
inline std::uint32_t codepage_of(const Caller& caller, std::uint32_t vsan) {
  return ficon_cmi_get_codepage(caller.requester, caller.handle, caller.word_a, caller.word_b,
                                caller.wait, vsan);
}

}  // namespace ficon
