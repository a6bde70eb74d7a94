/** Configuration text: generated from the emulator's store, and read line by line. */
#pragma once

#include <ficon_cmi.h>

#include <string>
#include <vector>

#include "session.h"

namespace ficon::ctl {

/** What to generate text for; empty lists ask for all. */
struct TextScope {
  std::vector<std::uint32_t> vsans;
  std::vector<if_index_t> interfaces;
};

std::string running_text(Session& session, const TextScope& scope);
/** Throws a Failure where no configuration was saved yet. */
std::string startup_text(Session& session, const TextScope& scope);

/** One line of configuration, understood. */
struct ConfigLine {
  enum class Kind {
    kFeature,
    kVsan,
    kDefaultProhibit,
    kMihTimeout,
    kSlotNumbers,
    kNoSlotNumbers,
    kLogicalNumbers,
    kNoLogicalNumbers,
    kPortNumber,
    kPortAddress,
    kLoggingLevel,
  };
  Kind kind;
  std::uint32_t value = 0;                  // VSAN, slot, time-out, level, port number or address
  if_index_t if_index = 0;                  // of the lines below an interface
  std::vector<std::uint32_t> numbers = {};  // port numbers, ascending
  std::size_t line = 0;  // in the text it was read from; 0 where it does not matter

  /** As the generator writes it: two spellings of one setting read the same. */
  std::string text() const;
};

/**
 * Reads a whole text. A UsageError names every line that makes no sense and why; nothing is
 * taken then.
 */
std::vector<ConfigLine> parse_config(const std::string& text);

/**
 * The MIH time-out's encoding: 6 bits of value, two that choose 1, 10, 100 or 1000. The greatest of
 * several, since the configuration text leaves out the lowest ones.
 */
std::uint32_t encode_mih_timeout(std::uint32_t seconds);

}  // namespace ficon::ctl
