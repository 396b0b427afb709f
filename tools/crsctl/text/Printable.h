#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace crsctl {

// `text` fit for one line of a message: control characters as \n, \t or \x1B, and what exceeds `limit` bytes
// replaced by "...".
std::string printable(std::string_view text, std::size_t limit = 120);

// Columns that `text` takes on a terminal, one for each character of UTF-8.
std::size_t displayWidth(std::string_view text);

// `text` with blanks behind it up to `width` columns.
std::string padded(std::string_view text, std::size_t width);

}  // namespace crsctl
