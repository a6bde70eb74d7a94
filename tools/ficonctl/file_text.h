/** A configuration file as JSON text: what `file export` writes and `file import` reads. */
#pragma once

#include <string>

#include "output.h"
#include "port_table.h"

namespace ficon::ctl {

struct FileText {
  std::string description;
  PortTable ports;
};

Json file_to_json(const FileText& file);

/** Checks everything before it gives anything; a UsageError says what is wrong and where. */
FileText file_from_json(const std::string& text);

}  // namespace ficon::ctl
