#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tools {

// `text` in one line of a message: control characters are written as \n, \t or \x1B, and a text of more than `limit`
// bytes ends in "...".
std::string printable(std::string_view text, std::size_t limit = 120);

// The number with its digits in groups of three: "1,234,567".
std::string grouped(std::uint64_t number);

// `text`, followed by blanks up to `width` columns of a terminal.
std::string padded(std::string_view text, std::size_t width);

using TableRows = std::vector<std::vector<std::string>>;

// One line for each row of cells. A column is as wide as its widest cell, columns are two blanks apart, and no line
// ends in blanks.
std::string alignedColumns(const TableRows& rows, const std::string& indent = "");

// How many characters must be replaced, inserted or removed to make one text of the other. Capitals count as small
// letters.
std::size_t editDistance(std::string_view left, std::string_view right);

// The known word that a mistyped one most likely means: the one at the smallest distance, the first among equals.
// Nothing if even that differs in more than a third of the word.
std::optional<std::string> closest(std::string_view word, const std::vector<std::string>& known);

}  // namespace Tools
