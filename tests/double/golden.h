/** Expected requests from tests/golden: offset, bytes and a remark per field. */
#pragma once

#include <map>
#include <string>

#include "double/bytes.h"

namespace ficon::test {

/** Bytes with a name and remarks, so that a difference can be told in the words of the file. */
class Golden {
 public:
  Golden(Bytes bytes, std::string name = "expected bytes")
      : name_(std::move(name)), bytes_(std::move(bytes)) {}
  Golden(std::string name, Bytes bytes, std::map<std::size_t, std::string> remarks)
      : name_(std::move(name)), bytes_(std::move(bytes)), remarks_(std::move(remarks)) {}
  Golden(const Record& record) : Golden(Bytes(record)) {}
  Golden(const Tlvs& tlvs) : Golden(Bytes(tlvs)) {}

  const Bytes& bytes() const { return bytes_; }

  /** The same with some bytes replaced: one file serves a family that differs in a field. */
  Golden with(std::size_t offset, const Bytes& field, const std::string& remark = "patched") const;

  /** Empty if equal; otherwise file, byte offset, both values and the nearest remark above. */
  std::string difference_to(const Bytes& actual) const;

 private:
  std::string name_;
  Bytes bytes_;
  std::map<std::size_t, std::string> remarks_;
};

/** Reads a file of tests/golden; a malformed one fails the test with its line. */
Golden golden(const std::string& name);

/** The same from text, for the reader's own tests. */
Golden parse_golden(const std::string& name, const std::string& content);

}  // namespace ficon::test
