#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "tools/crsctl/points/OutputBuffer.h"
#include "tools/crsctl/points/PointLine.h"

namespace crsctl {

enum class OutputFormat { TEXT, CSV, JSON };

// Decimal places of each ordinate.
using Decimals = std::array<int, ORDINATES>;

// A line of input as the writers see it.
struct InputLine {
    std::string_view text;  // without its end
    std::string_view end;   // "\n" or "\r\n"
    std::uint64_t number;   // counted from 1
};

// Writes what becomes of a line of input. One kind for each output format; made for one column layout.
class RowWriter {
public:
    virtual ~RowWriter() = default;

    // The line of column names that stood in the input.
    virtual void header(OutputBuffer& out, const InputLine& line) const = 0;
    // A transformed point: `point` says where the ordinates stood, `result` what they have become.
    virtual void point(OutputBuffer& out, const InputLine& line, const PointLine& point,
                       const std::array<double, ORDINATES>& result) const = 0;
    // A refused line. `point` is null when the line could not be read.
    virtual void mark(OutputBuffer& out, const InputLine& line, const PointLine* point,
                      const std::string& reason) const = 0;
    // A blank line or a comment.
    virtual void passOver(OutputBuffer& out, const InputLine& line) const = 0;
};

std::unique_ptr<RowWriter> makeRowWriter(OutputFormat format, const ColumnLayout& layout, Separator separator,
                                         const Decimals& decimals);

}  // namespace crsctl
