/** Configuration text generated from a store, and the records that it is made of. */
#pragma once

#include <ficon_cmi.h>

#include <map>
#include <string>
#include <vector>

#include "session.h"

namespace ficon::ctl {

/** What to generate text for; empty lists ask for all. */
struct TextScope {
  std::vector<std::uint32_t> vsans;
  std::vector<if_index_t> interfaces;
};

/** The emulator's store. */
std::string running_store(Session& session);
/** Its copy of the configuration that was saved. Throws a Failure where none was saved yet. */
std::string startup_store(Session& session);

/** Throws a Failure where the store cannot be read to its end: the generator would not tell. */
std::string generate_text(Session& session, const std::string& store, const TextScope& scope);

/** The records of one table of a store, by their keys; as bytes. */
using Records = std::map<std::string, std::string>;
Records read_records(const std::string& store, const std::string& table);

}  // namespace ficon::ctl
