/**
 * The model on disk: one SQLite file, used by one emulator at a time and readable by others.
 *
 * Table `state` holds the objects of the model by name, as JSON; `ficon_saved_config` and
 * `ficon_debug` hold the binary records that the configuration generator reads.
 */
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "model/switch.h"
#include "store/database.h"
#include "store/saved_config.h"

namespace ficon::emulator {

/** Keeps a store to one emulator; the file beside it also tells which process that is. */
class StoreLock {
 public:
  /** Throws StoreError when another process has it. */
  explicit StoreLock(const std::string& store_path);
  ~StoreLock();
  StoreLock(const StoreLock&) = delete;
  StoreLock& operator=(const StoreLock&) = delete;

 private:
  int fd_;
};

class Store {
 public:
  /** Opens or creates it. Throws StoreError for a foreign, damaged, newer or used one. */
  explicit Store(const std::string& path);
  ~Store();

  /** Fills an empty switch. Throws StoreError when a stored object makes no sense. */
  void load(Switch& model);

  /** Writes what was touched, all or nothing, and durably. Throws StoreError. */
  void commit(const Switch& model);

  /** Copies what is stored to beside the store, in place whole or not at all. Throws StoreError. */
  void save_startup();

  const std::string& path() const { return path_; }

 private:
  struct Statements;

  void prepare_schema();
  void erase_below(const std::string& path);
  void save_object(const Switch& model, const std::string& name, SavedRecords& records);
  void write_records(const SavedRecords& records);

  std::string path_;
  StoreLock lock_;
  Database database_;
  std::unique_ptr<Statements> statements_;
};

/** The file of a store given as a file or as a directory (created if need be). */
std::string store_file(const std::string& path);

}  // namespace ficon::emulator
