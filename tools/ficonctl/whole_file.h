/** Files of the operator's own, read and written whole. */
#pragma once

#include <string>
#include <string_view>

namespace ficon::ctl {

/** A Failure that says why where it cannot be read. */
std::string read_file(const std::string& path);
/** A Failure that says why where it cannot be written; what was there is lost. */
void write_file(const std::string& path, std::string_view contents);

}  // namespace ficon::ctl
