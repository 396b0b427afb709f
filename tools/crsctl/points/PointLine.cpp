#include "tools/crsctl/points/PointLine.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>

#include "tools/crsctl/start/Failures.h"
#include "tools/crsctl/text/Printable.h"

namespace crsctl {
namespace {

bool isBlankCharacter(char character) { return character == ' ' || character == '\t'; }

const char* skipBlanks(const char* position, const char* end) {
    while (position != end && isBlankCharacter(*position)) ++position;
    return position;
}

std::string_view between(const char* begin, const char* end) { return {begin, static_cast<std::size_t>(end - begin)}; }

std::string_view withoutBlanksBehind(const char* begin, const char* end) {
    while (end != begin && isBlankCharacter(end[-1])) --end;
    return between(begin, end);
}

enum class NumberFault { NONE, NOT_A_NUMBER, OUT_OF_RANGE, NOT_FINITE };

// from_chars does not tell a number too large from one too small, which is as good as zero.
NumberFault readNumberAtLimits(std::string_view text, double& value) {
    value = std::strtod(std::string(text).c_str(), nullptr);
    return std::isfinite(value) ? NumberFault::NONE : NumberFault::OUT_OF_RANGE;
}

NumberFault readNumber(std::string_view text, double& value) {
    const char* begin = text.data();
    const char* const end = begin + text.size();
    if (text.size() > 1 && *begin == '+' && begin[1] != '-') ++begin;
    const auto [stop, error] = std::from_chars(begin, end, value);
    if (error == std::errc::invalid_argument || stop != end) return NumberFault::NOT_A_NUMBER;
    if (error == std::errc::result_out_of_range) return readNumberAtLimits(between(begin, end), value);
    return std::isfinite(value) ? NumberFault::NONE : NumberFault::NOT_FINITE;
}

std::string quoted(std::string_view text) { return "\"" + printable(text, 40) + "\""; }

std::string columnName(const ColumnLayout& layout, std::size_t ordinate) {
    return std::string("column ") + std::to_string(layout.column[ordinate] + 1) + " (" + ORDINATE_NAMES[ordinate] + ")";
}

std::string faultInWords(NumberFault fault, const ColumnLayout& layout, std::size_t ordinate, std::string_view text) {
    const std::string subject = columnName(layout, ordinate);
    if (fault == NumberFault::OUT_OF_RANGE) return subject + " is too large: " + quoted(text);
    if (fault == NumberFault::NOT_FINITE) return subject + " is not finite: " + quoted(text);
    return subject + " is not a number: " + quoted(text);
}

std::string missingColumn(const ColumnLayout& layout, std::size_t index) {
    const std::size_t ordinate = layout.ordinateOf(index);
    const std::string name =
        ordinate == ORDINATES ? "column " + std::to_string(index + 1) : columnName(layout, ordinate);
    return name + " is missing";
}

std::size_t requireOnce(const std::vector<std::string>& names, const std::string& name, const std::string& columns) {
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) throw SetUpError("--columns " + printable(columns) + ": " + name + " is missing");
    if (std::find(found + 1, names.end(), name) != names.end())
        throw SetUpError("--columns " + printable(columns) + ": " + name + " occurs twice");
    return static_cast<std::size_t>(found - names.begin());
}

std::vector<std::string> splitAtCommas(const std::string& text) {
    std::vector<std::string> parts(1);
    for (const char character : text) {
        if (character == ',')
            parts.emplace_back();
        else
            parts.back() += character;
    }
    return parts;
}

}  // namespace

std::size_t ColumnLayout::ordinateOf(std::size_t columnIndex) const {
    for (std::size_t ordinate = X; ordinate < ORDINATES; ++ordinate)
        if (column[ordinate] == columnIndex) return ordinate;
    return ORDINATES;
}

std::size_t ColumnLayout::lastOrdinateColumn() const {
    const std::size_t last = std::max(column[X], column[Y]);
    return column[Z] == NO_COLUMN ? last : std::max(last, column[Z]);
}

ColumnLayout layoutFrom(const std::string& columns) {
    ColumnLayout layout;
    layout.names = splitAtCommas(columns);
    layout.heightOptional = false;
    layout.column[X] = requireOnce(layout.names, "x", columns);
    layout.column[Y] = requireOnce(layout.names, "y", columns);
    const bool hasHeight = std::find(layout.names.begin(), layout.names.end(), "z") != layout.names.end();
    layout.column[Z] = hasHeight ? requireOnce(layout.names, "z", columns) : NO_COLUMN;
    return layout;
}

ColumnScanner::ColumnScanner(std::string_view line, Separator separator)
    : position(skipBlanks(line.data(), line.data() + line.size())), end(line.data() + line.size()) {
    constexpr char CHARACTERS[] = {'\0', ' ', ',', ';'};
    separatorChar = CHARACTERS[static_cast<std::size_t>(separator)];
    atEnd = position == end;
}

bool ColumnScanner::next(std::string_view& column) {
    if (atEnd) return false;
    if (separatorChar == '\0') settleSeparator();
    column = separatorChar == ' ' ? nextBlankSeparated() : nextSeparated();
    return true;
}

void ColumnScanner::settleSeparator() {
    const char* behind = *position == '"' ? endOfQuoted() : position;
    while (behind != end && !isBlankCharacter(*behind) && *behind != ',' && *behind != ';') ++behind;
    behind = skipBlanks(behind, end);
    separatorChar = behind != end && (*behind == ',' || *behind == ';') ? *behind : ' ';
}

std::string_view ColumnScanner::nextBlankSeparated() {
    const char* const begin = position;
    while (position != end && !isBlankCharacter(*position)) ++position;
    const std::string_view column = between(begin, position);
    position = skipBlanks(position, end);
    atEnd = position == end;
    return column;
}

const char* ColumnScanner::endOfQuoted() const {
    for (const char* next = position + 1; next < end; ++next) {
        if (*next != '"') continue;
        if (next + 1 == end || next[1] != '"') return next + 1;
        ++next;
    }
    return end;
}

const char* ColumnScanner::endOfSeparated() const {
    const char* const begin = position != end && *position == '"' ? endOfQuoted() : position;
    return std::find(begin, end, separatorChar);
}

std::string_view ColumnScanner::nextSeparated() {
    const char* const begin = position;
    position = endOfSeparated();
    const std::string_view column = withoutBlanksBehind(begin, position);
    atEnd = position == end;
    if (!atEnd) position = skipBlanks(position + 1, end);
    return column;
}

bool readPoint(std::string_view line, const ColumnLayout& layout, Separator separator, PointLine& point,
               std::string& reason) {
    ColumnScanner columns(line, separator);
    const std::size_t last = layout.lastOrdinateColumn();
    point.hasHeight = false;
    for (std::size_t index = 0; index <= last; ++index) {
        const std::size_t ordinate = layout.ordinateOf(index);
        const bool optional = ordinate == Z && layout.heightOptional;
        std::string_view text;
        if (!columns.next(text)) {
            if (!optional) reason = missingColumn(layout, index);
            if (!optional) return false;
            break;
        }
        if (ordinate == ORDINATES) continue;
        const NumberFault fault = readNumber(text, point.value[ordinate]);
        if (fault == NumberFault::NOT_A_NUMBER && optional) break;
        if (fault != NumberFault::NONE) reason = faultInWords(fault, layout, ordinate, text);
        if (fault != NumberFault::NONE) return false;
        point.text[ordinate] = text;
        if (ordinate == Z) point.hasHeight = true;
    }
    point.separator = columns.separator();
    return true;
}

bool isBlank(std::string_view line) { return std::all_of(line.begin(), line.end(), isBlankCharacter); }

}  // namespace crsctl
