#include "protocol/cmi_header.h"

#include <platform/ficon_base.h>

#include <cstring>
#include <new>

namespace {

void put_text(ficon::wire::bytes<32>& field, const char* text) {
  if (text == nullptr) return;
  const std::size_t length = strnlen(text, sizeof field.raw - 1);
  std::memcpy(field.raw, text, length);
}

}  // namespace

void ficon_init_cmi_hdr(void* header, uint32_t msgtype, const char* word_a, const char* word_b,
                        uint32_t subtype) {
  auto& part = *new (header) ficon::platform::CmiHeaderPart{};
  part.message_type.set(msgtype);
  part.subtype.set(subtype);
  put_text(part.word_a, word_a);
  put_text(part.word_b, word_b);
}
