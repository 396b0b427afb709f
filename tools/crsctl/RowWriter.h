#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "tools/crsctl/Blocks.h"
#include "tools/crsctl/PointLines.h"

namespace crsctl {

// TEXT: the line with its ordinates replaced. If blanks separate the columns, the ordinates of a point have the
// separators of cs2cs: a tab before y and a blank before z. Any other line keeps its separator. Blank lines, comments
// and the header are copied.
//
// CSV: comma-separated values in the order of the input's columns, with quotes where they are needed. Every ordinate of
// a refused line is "*". The header has the names of the ordinates from the layout. Blank lines and comments are
// omitted.
//
// JSON: one object a line. It has the ordinates, then each other column under its name; columns without a name are in
// the array "rest". The object of a refused line has "line", "error" and "input". Blank lines, comments and the header
// are omitted.
enum class OutputFormat { TEXT, CSV, JSON };

// Decimal places of each ordinate.
using Decimals = std::array<int, MAX_ORDINATES>;

// How rows are written.
struct RowFormat {
    OutputFormat output = OutputFormat::TEXT;
    ColumnLayout layout = ColumnLayout(Shape::POINT);
    Separator separator = Separator::AUTOMATIC;  // of the input
    Decimals decimals = {};
};

// A line of input.
struct InputLine {
    std::string_view text;  // without its end
    std::string_view end;   // "\n" or "\r\n"
    std::uint64_t number;   // counted from 1
};

// Writes the header of the input, the line with the names of its columns.
void writeHeader(OutputBuffer& out, const RowFormat& format, std::string_view header);

// Writes a transformed line. `read` has the ordinates of the input, `result` those of the output.
void writeRow(OutputBuffer& out, const RowFormat& format, const InputLine& line, const CoordinateLine& read,
              const Ordinates& result);

// Writes a refused line. `read` is null if the line could not be read.
void writeMark(OutputBuffer& out, const RowFormat& format, const InputLine& line, const CoordinateLine* read,
               const std::string& reason);

// Writes a blank line or a comment.
void writeIgnored(OutputBuffer& out, const RowFormat& format, const InputLine& line);

}  // namespace crsctl
