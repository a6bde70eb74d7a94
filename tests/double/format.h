/** Lines of the record. */
#pragma once

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <string>

namespace ficon::test {

[[gnu::format(printf, 1, 0)]] inline std::string formatted_list(const char* format,
                                                                va_list arguments) {
  char text[2048];
  std::vsnprintf(text, sizeof text, format, arguments);
  return text;
}

[[gnu::format(printf, 1, 2)]] inline std::string formatted(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::string text = formatted_list(format, arguments);
  va_end(arguments);
  return text;
}

/** An argument as it stands in a recorded call: numbers, texts, `*` for any other pointer. */
template <class Integer>
std::string argument_text(Integer value) {
  const auto wide = static_cast<unsigned long long>(value);
  return formatted(wide < 0x10000 ? "%llu" : "0x%llx", wide);
}
inline std::string argument_text(const char* value) {
  return value == nullptr ? "null" : '"' + std::string(value) + '"';
}
template <class Pointee>
std::string argument_text(Pointee* value) {
  return value == nullptr ? "null" : "*";
}

template <class... Arguments>
std::string call_text(const char* function, Arguments... arguments) {
  std::string line = function;
  ((line += ' ' + argument_text(arguments)), ...);
  return line;
}

}  // namespace ficon::test
