#include "tools/crsctl/points/TextRowWriter.h"

#include <algorithm>

#include "tools/crsctl/points/FixedDecimals.h"

namespace crsctl {
namespace {

// What cs2cs writes for a point that it cannot transform.
constexpr const char* MARKS[ORDINATES] = {"*", "*", "inf"};

char separatorBefore(std::size_t ordinate, char lineSeparator) {
    if (lineSeparator != ' ') return lineSeparator;
    return ordinate == Z ? ' ' : '\t';
}

std::string_view between(const char* begin, const char* end) { return {begin, static_cast<std::size_t>(end - begin)}; }

}  // namespace

TextRowWriter::TextRowWriter(const ColumnLayout& columnLayout, const Decimals& places)
    : order{X, Y, Z},
      column(columnLayout.column),
      count(columnLayout.column[Z] == NO_COLUMN ? Z : ORDINATES),
      decimals(places) {
    std::sort(order.begin(), order.end(), [this](std::size_t a, std::size_t b) { return column[a] < column[b]; });
}

template <typename WriteOrdinate>
void TextRowWriter::replaceOrdinates(OutputBuffer& out, const InputLine& line, const PointLine& point,
                                     WriteOrdinate write) const {
    // Blanks before the first column go.
    const char* copied = column[order[0]] == 0 ? point.text[order[0]].data() : line.text.data();
    std::size_t columnBefore = NO_COLUMN;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t ordinate = order[i];
        if (ordinate == Z && !point.hasHeight) continue;
        const std::string_view text = point.text[ordinate];
        if (columnBefore != NO_COLUMN && column[ordinate] == columnBefore + 1)
            out.append(separatorBefore(ordinate, point.separator));
        else
            out.append(between(copied, text.data()));
        write(ordinate);
        copied = text.data() + text.size();
        columnBefore = column[ordinate];
    }
    out.append(between(copied, line.text.data() + line.text.size()));
    out.append(line.end);
}

void TextRowWriter::header(OutputBuffer& out, const InputLine& line) const { passOver(out, line); }

void TextRowWriter::point(OutputBuffer& out, const InputLine& line, const PointLine& point,
                          const std::array<double, ORDINATES>& result) const {
    replaceOrdinates(out, line, point, [&](std::size_t ordinate) {
        out.commit(writeFixed(out.reserve(LONGEST_FIXED_DECIMAL), result[ordinate], decimals[ordinate]));
    });
}

void TextRowWriter::mark(OutputBuffer& out, const InputLine& line, const PointLine* point,
                         const std::string& /*reason*/) const {
    if (point != nullptr) {
        replaceOrdinates(out, line, *point, [&out](std::size_t ordinate) { out.append(MARKS[ordinate]); });
        return;
    }
    out.append("*\t* ");
    out.append(line.text);
    out.append(line.end);
}

void TextRowWriter::passOver(OutputBuffer& out, const InputLine& line) const {
    out.append(line.text);
    out.append(line.end);
}

}  // namespace crsctl
