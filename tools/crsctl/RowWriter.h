#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "tools/crsctl/Blocks.h"
#include "tools/crsctl/PointLines.h"

namespace crsctl {

// TEXT: the line as it is, with its ordinates replaced. A line whose separator is a blank gets the separators of cs2cs
// between the ordinates of a point: a tab before y and a blank before z. Any other line keeps its separator. Blank
// lines, comments and the header pass unchanged.
//
// CSV: comma-separated values, quoted where they need it, in the order of the input's columns; "*" in place of every
// ordinate of a refused line. In the header each ordinate has its name in a layout. Blank lines and comments are left
// out.
//
// JSON: one object a line: the ordinates, then each carried column under its name, those without a name as "rest"; or
// line, error and input of a refused line. Blank lines, comments and the header are left out.
enum class OutputFormat { TEXT, CSV, JSON };

// Decimal places of each ordinate.
using Decimals = std::array<int, MOST_ORDINATES>;

// How rows are written.
struct RowFormat {
    OutputFormat output = OutputFormat::TEXT;
    ColumnLayout layout = ColumnLayout(Shape::POINT);
    Separator separator = Separator::AUTOMATIC;  // of the input
    Decimals decimals = {};
};

// A line of input as the writers see it.
struct InputLine {
    std::string_view text;  // without its end
    std::string_view end;   // "\n" or "\r\n"
    std::uint64_t number;   // counted from 1
};

// The line of column names that the input has.
void writeHeader(OutputBuffer& out, const RowFormat& format, std::string_view header);

// A transformed line: `read` is where the ordinates were, `result` what they have become.
void writeRow(OutputBuffer& out, const RowFormat& format, const InputLine& line, const CoordinateLine& read,
              const Ordinates& result);

// A refused line. `read` is null when the line could not be read.
void writeMark(OutputBuffer& out, const RowFormat& format, const InputLine& line, const CoordinateLine* read,
               const std::string& reason);

// A blank line or a comment.
void writePassedOver(OutputBuffer& out, const RowFormat& format, const InputLine& line);

}  // namespace crsctl
