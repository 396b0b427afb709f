#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace CoordinateTransformation {

// Reads comma-separated text with quotes (RFC 4180) in UTF-8, record by record.
//
//   text   = { record end } [ record ]
//   record = cell { "," cell }
//   cell   = { any but "," | '"' | CR | LF | NUL } | '"' { any but '"' | NUL | '""' } '"'
//   end    = [ CR ] LF
//
// A line end at the end of the text does not begin another record; an empty line is a record of one empty cell.
class QuotedCsv {
public:
    // Borrows `text`. A record of more than `mostCells` cells is a fault.
    QuotedCsv(std::string_view text, std::size_t mostCells) : rest(text), limit(mostCells) {}

    // Replaces `cells` by those of the next record. Returns false at the end of the text and at a fault.
    bool readRecord(std::vector<std::string>& cells);
    // The fault in the record that could not be read; empty if there was none.
    const std::string& getFault() const { return fault; }
    // The line, counted from 1, at which the last record begins, read or faulty.
    std::size_t getLine() const { return line; }

private:
    bool readCell(std::string& cell);
    bool readPlainCell(std::string& cell);
    bool readQuotedCell(std::string& cell);
    bool endRecord();
    bool take(char expected);
    bool refuse(const char* reason);

    std::string_view rest;
    std::size_t limit;
    std::string fault;
    std::size_t line = 0;
    std::size_t linesRead = 0;
};

// Whether the text is well-formed UTF-8 (RFC 3629).
bool isUtf8(std::string_view text);

}  // namespace CoordinateTransformation
