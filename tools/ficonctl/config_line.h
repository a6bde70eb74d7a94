/** Configuration text, read line by line. */
#pragma once

#include <ficon_cmi.h>

#include <string>
#include <vector>

namespace ficon::ctl {

/** One line of configuration, understood. */
struct ConfigLine {
  /** In the order in which lines take effect, wherever they stand. */
  enum class Kind {
    kFeature,
    kVsan,
    kDefaultProhibit,
    kMihTimeout,
    kNoSlotNumbers,
    kSlotNumbers,
    kNoLogicalNumbers,
    kLogicalNumbers,
    kPortNumber,
    kPortAddress,
    kLoggingLevel,
  };
  Kind kind;
  std::uint32_t value = 0;  // VSAN, slot, time-out in seconds, level, port number or address
  if_index_t if_index = 0;  // of the lines below an interface
  std::vector<std::uint32_t> numbers = {};  // port numbers, in the order of their positions
  std::size_t line = 0;                     // in the text it was read from, from 1

  /** As the generator writes it: two spellings of one setting read the same. */
  std::string text() const;
};

/** What is wrong with a text: a sentence a line. */
class Complaints {
 public:
  void add(std::size_t line, const std::string& what) {
    text_ += "\n  line " + std::to_string(line) + ": " + what;
  }
  /** A UsageError that tells all of them, if there are any. */
  void settle() const;

 private:
  std::string text_;
};

/** Reads a whole text. A UsageError names every line that makes no sense and why. */
std::vector<ConfigLine> parse_config(const std::string& text, std::uint32_t largest_port_number);

}  // namespace ficon::ctl
