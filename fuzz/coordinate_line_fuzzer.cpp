// Reads lines of points and of boxes as crsctl does. A line is refused with a reason, or its ordinates are finite
// numbers from the text of the line. The first line of the input lists the columns, as --columns does, and may be
// empty.

#include <cmath>

#include "fuzz/Input.h"
#include "tools/crsctl/PointLines.h"
#include "tools/crsctl/Session.h"

using namespace crsctl;

namespace {

void requireInside(std::string_view part, std::string_view whole) {
    Fuzz::require(part.data() >= whole.data() && part.data() + part.size() <= whole.data() + whole.size());
}

// Requires that only separators and blanks are between columns.
void scan(std::string_view line, Separator separator) {
    ColumnScanner columns(line, separator);
    std::string_view column;
    const char* previousEnd = line.data();
    while (columns.next(column)) {
        requireInside(column, line);
        Fuzz::require(column.data() >= previousEnd);
        for (const char* c = previousEnd; c != column.data(); ++c)
            Fuzz::require(*c == ' ' || *c == '\t' || *c == columns.separator());
        previousEnd = column.data() + column.size();
    }
}

void read(const std::string& line, const ColumnLayout& layout, Separator separator) {
    CoordinateLine coordinates{};
    std::string reason;
    if (!readCoordinates(line, layout, separator, coordinates, reason)) return Fuzz::require(!reason.empty());
    Fuzz::require(coordinates.count >= layout.leastCount() && coordinates.count <= layout.ordinateCount);
    for (std::size_t ordinate = 0; ordinate < coordinates.count; ++ordinate) {
        Fuzz::require(std::isfinite(coordinates.value[ordinate]) && !coordinates.text[ordinate].empty());
        Fuzz::require(isNumber(coordinates.text[ordinate]));
        requireInside(coordinates.text[ordinate], line);
    }
    Fuzz::require(!isBlank(line));
}

ColumnLayout readLayout(Shape shape, const std::string& columns) {
    try {
        return columns.empty() ? ColumnLayout(shape) : ColumnLayout(shape, columns);
    } catch (const SetUpError& refused) {
        Fuzz::require(*refused.what() != '\0');
        return ColumnLayout(shape);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream lines(Fuzz::text(data, size));
    std::string line;
    std::getline(lines, line);
    const ColumnLayout layouts[] = {readLayout(Shape::POINT, line), readLayout(Shape::BOX, line)};
    while (std::getline(lines, line)) {
        for (const Separator separator :
             {Separator::AUTOMATIC, Separator::BLANK, Separator::COMMA, Separator::SEMICOLON}) {
            scan(line, separator);
            for (const ColumnLayout& layout : layouts) read(line, layout, separator);
        }
    }
    return 0;
}
