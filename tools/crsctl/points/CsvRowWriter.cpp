#include "tools/crsctl/points/CsvRowWriter.h"

#include <algorithm>

#include "tools/crsctl/points/FixedDecimals.h"

namespace crsctl {
namespace {

bool needsQuotes(std::string_view value) { return value.find_first_of(",\"\r\n") != std::string_view::npos; }

// A value that came quoted out of a separated line is quoted already.
bool isQuoted(std::string_view value, char separator) {
    return separator != ' ' && value.size() > 1 && value.front() == '"' && value.back() == '"';
}

void appendValue(OutputBuffer& out, std::string_view value, char separator) {
    if (isQuoted(value, separator) || !needsQuotes(value)) {
        out.append(value);
        return;
    }
    out.append('"');
    for (const char character : value) {
        if (character == '"') out.append('"');
        out.append(character);
    }
    out.append('"');
}

}  // namespace

CsvRowWriter::CsvRowWriter(const ColumnLayout& columnLayout, Separator inputSeparator, const Decimals& places)
    : layout(columnLayout), separator(inputSeparator), decimals(places) {}

// A row has as many columns as the line, and at least those of its ordinates.
template <typename WriteOrdinate>
void CsvRowWriter::row(OutputBuffer& out, std::string_view text, bool hasHeight, WriteOrdinate write) const {
    ColumnScanner columns(text, separator);
    const std::size_t last = hasHeight ? layout.lastOrdinateColumn() : std::max(layout.column[X], layout.column[Y]);
    std::string_view value;
    for (std::size_t index = 0;; ++index) {
        const bool present = columns.next(value);
        if (!present && index > last) break;
        if (index > 0) out.append(',');
        const std::size_t ordinate = layout.ordinateOf(index);
        if (ordinate < Z || (ordinate == Z && hasHeight))
            write(ordinate);
        else if (present)
            appendValue(out, value, columns.separator());
    }
    out.append('\n');
}

void CsvRowWriter::header(OutputBuffer& out, const InputLine& line) const {
    const bool hasHeight = layout.column[Z] != NO_COLUMN && !layout.heightOptional;
    row(out, line.text, hasHeight, [&out](std::size_t ordinate) { out.append(ORDINATE_NAMES[ordinate]); });
}

void CsvRowWriter::point(OutputBuffer& out, const InputLine& line, const PointLine& point,
                         const std::array<double, ORDINATES>& result) const {
    row(out, line.text, point.hasHeight, [&](std::size_t ordinate) {
        out.commit(writeFixed(out.reserve(LONGEST_FIXED_DECIMAL), result[ordinate], decimals[ordinate]));
    });
}

void CsvRowWriter::mark(OutputBuffer& out, const InputLine& line, const PointLine* point,
                        const std::string& /*reason*/) const {
    const bool hasHeight =
        point != nullptr ? point->hasHeight : !layout.heightOptional && layout.column[Z] != NO_COLUMN;
    row(out, line.text, hasHeight, [&out](std::size_t) { out.append('*'); });
}

void CsvRowWriter::passOver(OutputBuffer& /*out*/, const InputLine& /*line*/) const {}

}  // namespace crsctl
