/**
 * The binary records that the configuration generator reads, in the table `ficon_saved_config`.
 * They follow from the model and are written with it, in the same transaction; they are never
 * read back here.
 */
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "model/switch.h"
#include "store/object_path.h"
#include "wire/saved_config.h"

namespace ficon::emulator {

/** Key and value are bytes; no value: the record is removed. */
using SavedRecords = std::map<std::string, std::optional<std::string>>;

/** What the records of an object of this pattern become when it changes, appears or goes. */
struct SavedConfigKind {
  const char* pattern;
  void (*write)(const Switch&, const PathParts&, SavedRecords&);
};

/** The 8-byte key of a record: its type, for the port table with a block, then zeros. */
std::string saved_config_key(wire::SavedRecord type, std::uint32_t block = 0);

/** Key and value of the debug settings, which have a table of their own. */
std::pair<std::string, std::string> debug_record(std::uint32_t logging_level);

void write_feature_record(const Switch&, const PathParts&, SavedRecords&);
void write_limits_record(const Switch&, const PathParts&, SavedRecords&);
void write_port_records(const Switch&, const PathParts&, SavedRecords&);
void write_default_prohibit_record(const Switch&, const PathParts&, SavedRecords&);
void write_vsan_record(const Switch&, const PathParts&, SavedRecords&);

}  // namespace ficon::emulator
