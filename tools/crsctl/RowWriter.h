#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

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

// The columns of the rows.
struct RowFormat {
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

// Appends the rows of one output format to a text. Threads may share it.
class RowWriter {
public:
    explicit RowWriter(RowFormat rowFormat) : format(std::move(rowFormat)) {}
    virtual ~RowWriter() = default;

    // Writes the header of the input, the line with the names of its columns.
    virtual void header(std::string& /*out*/, std::string_view /*line*/) const {}
    // Writes a transformed line. `read` has the ordinates of the input, `result` those of the output.
    void row(std::string& out, const InputLine& line, const CoordinateLine& read, const Ordinates& result) const;
    // Writes a refused line. `read` is null if the line could not be read.
    virtual void mark(std::string& out, const InputLine& line, const CoordinateLine* read,
                      const std::string& reason) const = 0;
    // Writes a blank line or a comment.
    virtual void ignored(std::string& /*out*/, const InputLine& /*line*/) const {}

    const RowFormat format;

protected:
    using Texts = std::array<std::string_view, MAX_ORDINATES>;

private:
    virtual void write(std::string& out, const InputLine& line, const CoordinateLine& read,
                       const Texts& ordinates) const = 0;
};

std::unique_ptr<const RowWriter> makeRowWriter(OutputFormat output, const RowFormat& format);

}  // namespace crsctl
