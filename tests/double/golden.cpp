#include "double/golden.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace ficon::test {
namespace {

std::string trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

/** Builds the bytes line by line; every line says where it believes to be. */
class Reader {
 public:
  void line(const std::string& raw) {
    const auto sharp = raw.find('#');
    const std::string content = trimmed(raw.substr(0, sharp));
    if (content.empty()) return;
    const std::string remark = sharp == std::string::npos ? "" : trimmed(raw.substr(sharp + 1));
    if (content.starts_with("base ")) {
      base_ = number(content.substr(5), 10);
    } else if (content.starts_with("zero to ")) {
      zero_to(base_ + number(content.substr(8), 10));
    } else if (content.starts_with("header ")) {
      header(content.substr(7));
    } else {
      field(content, remark);
    }
  }

  Golden golden(const std::string& name) && {
    return {name, std::move(bytes_), std::move(remarks_)};
  }

 private:
  static std::size_t number(const std::string& text, int radix) {
    std::size_t used = 0;
    const std::string digits = trimmed(text);
    const auto value = std::stoul(digits, &used, radix);
    if (used != digits.size()) throw std::invalid_argument("not a number: " + text);
    return value;
  }

  void zero_to(std::size_t end) {
    if (end < bytes_.size()) throw std::invalid_argument("zero to an offset already passed");
    remarks_[bytes_.size()] = "zero";
    bytes_.resize(end);
  }

  void header(const std::string& content) {
    std::istringstream words(content);
    std::uint32_t message_type = 0;
    std::uint32_t subtype = 0;
    std::string word_a;
    std::string word_b;
    words >> message_type >> subtype >> word_a >> word_b;
    if (words.fail()) throw std::invalid_argument("header TYPE SUBTYPE WORD_A WORD_B");
    remarks_[bytes_.size()] = "the platform's part of the header";
    bytes_ = bytes_ + platform_header(message_type, subtype, word_a, word_b);
  }

  void field(const std::string& content, const std::string& remark) {
    const auto colon = content.find(':');
    if (colon == std::string::npos) throw std::invalid_argument("offset: bytes");
    const std::size_t offset = base_ + number(content.substr(0, colon), 10);
    if (offset != bytes_.size()) {
      throw std::invalid_argument("offset " + std::to_string(offset) + ", but " +
                                  std::to_string(bytes_.size()) + " bytes stand before");
    }
    remarks_[offset] = remark;
    std::istringstream words(content.substr(colon + 1));
    for (std::string word; words >> word;) append(word);
  }

  /** `1f`, `host32=11223344`, `host16=1122`, `"text"` (without blanks). */
  void append(const std::string& word) {
    if (word.starts_with("host32=")) {
      bytes_ = bytes_ + host32(static_cast<std::uint32_t>(number(word.substr(7), 16)));
    } else if (word.starts_with("host16=")) {
      bytes_ = bytes_ + host16(static_cast<std::uint16_t>(number(word.substr(7), 16)));
    } else if (word.size() >= 2 && word.front() == '"' && word.back() == '"') {
      bytes_ = bytes_ + text(std::string_view(word).substr(1, word.size() - 2));
    } else if (word.size() == 2) {
      bytes_.push_back(static_cast<std::uint8_t>(number(word, 16)));
    } else {
      throw std::invalid_argument("not a byte: " + word);
    }
  }

  std::size_t base_ = 0;
  Bytes bytes_;
  std::map<std::size_t, std::string> remarks_;
};

}  // namespace

Golden Golden::with(std::size_t offset, const Bytes& field, const std::string& remark) const {
  if (offset + field.size() > bytes_.size())
    throw std::out_of_range(name_ + ": patched beyond its end");
  Golden copy = *this;
  std::copy(field.begin(), field.end(), copy.bytes_.begin() + static_cast<std::ptrdiff_t>(offset));
  copy.remarks_[offset] = remark;
  return copy;
}

std::string Golden::difference_to(const Bytes& actual) const {
  const std::string found = difference(bytes_, actual);
  if (found.empty()) return "";
  const std::size_t offset = std::stoul(found.substr(5));
  auto above = remarks_.upper_bound(offset);
  const std::string remark = above == remarks_.begin() ? "" : (--above)->second;
  return name_ + ", " + found + (remark.empty() ? "" : " [" + remark + "]");
}

Golden parse_golden(const std::string& name, const std::string& content) {
  Reader reader;
  std::istringstream lines(content);
  int number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    try {
      reader.line(line);
    } catch (const std::exception& problem) {
      throw std::invalid_argument(name + ":" + std::to_string(number) + ": " + problem.what());
    }
  }
  return std::move(reader).golden(name);
}

Golden golden(const std::string& name) {
  std::ifstream file(std::string(FICON_GOLDEN_DIR) + "/" + name);
  if (!file) throw std::invalid_argument("no golden file " + name);
  std::ostringstream content;
  content << file.rdbuf();
  return parse_golden(name, content.str());
}

}  // namespace ficon::test
