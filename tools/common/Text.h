#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tools {

// Returns `text` in a form for one line of a message: control characters are written as \n, \t or \x1B, and a text of
// more than `limit` bytes is cut and ends in "...".
std::string printable(std::string_view text, std::size_t limit = 120);

// Returns the number with its digits in groups of three: "1,234,567".
std::string grouped(std::uint64_t number);

// Returns `text`, followed by blanks up to `width` columns of a terminal.
std::string padded(std::string_view text, std::size_t width);

using TableRows = std::vector<std::vector<std::string>>;

// Returns one line for each row of cells. A column is as wide as its widest cell. Two blanks separate the columns. No
// line ends in blanks.
std::string alignedColumns(const TableRows& rows, const std::string& indent = "");

// Returns the text with its capitals A to Z as small letters.
std::string smallLetters(std::string text);

// Returns the number of characters that must be replaced, inserted or removed to turn one text into the other. Capitals
// and small letters are equal.
std::size_t editDistance(std::string_view left, std::string_view right);

// Returns the known word with the smallest edit distance from a mistyped word, the first of several. Returns nothing if
// the distance is more than a third of the word, and more than 1.
std::optional<std::string> closest(std::string_view word, const std::vector<std::string>& known);

}  // namespace Tools
