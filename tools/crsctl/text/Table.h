#pragma once

#include <string>
#include <vector>

namespace crsctl {

// Rows of cells in columns as wide as their widest cell, two blanks apart, each row one line. No blanks at the
// end of a line.
std::string alignedColumns(const std::vector<std::vector<std::string>>& rows, const std::string& indent = "");

}  // namespace crsctl
