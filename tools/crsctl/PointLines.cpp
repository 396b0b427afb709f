#include "tools/crsctl/PointLines.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <numeric>

#include <boost/algorithm/string/split.hpp>

#include "tools/common/Text.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

using Tools::printable;

namespace {

using Names = std::vector<std::string>;

constexpr std::array<std::string_view, MAX_ORDINATES> POINT_NAMES = {"x", "y", "z", ""};
constexpr std::array<std::string_view, MAX_ORDINATES> BOX_NAMES = {"minx", "miny", "maxx", "maxy"};

constexpr const char* EAST_NAMES[] = {"lon", "long", "longitude", "lng", "easting", "east"};
constexpr const char* NORTH_NAMES[] = {"lat", "latitude", "northing", "north"};
constexpr const char* UP_NAMES[] = {"z", "height", "elevation", "altitude"};

// Capitals and small letters are equal.
template <std::size_t COUNT>
bool isOneOf(const char* const (&known)[COUNT], std::string_view name) {
    return std::any_of(known, known + COUNT, [name](auto other) { return Tools::editDistance(name, other) == 0; });
}

// Returns the ordinate of a point in a direction, or MAX_ORDINATES if the name is not that of a direction.
std::size_t ordinateInDirection(std::string_view name, bool isEastFirst) {
    if (isOneOf(EAST_NAMES, name)) return isEastFirst ? X : Y;
    if (isOneOf(NORTH_NAMES, name)) return isEastFirst ? Y : X;
    return isOneOf(UP_NAMES, name) ? std::size_t{Z} : MAX_ORDINATES;
}

bool occurs(const Names& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// Replaces names of directions with x, y and z. Returns false, and changes nothing, if the list has x or y, or if it
// has no horizontal direction.
bool translateDirections(Names& names, bool isEastFirst) {
    if (occurs(names, POINT_NAMES[X]) || occurs(names, POINT_NAMES[Y])) return false;
    Names translated = names;
    bool hasHorizontal = false;
    for (std::string& name : translated) {
        const std::size_t ordinate = ordinateInDirection(name, isEastFirst);
        hasHorizontal |= ordinate < Z;
        if (ordinate != MAX_ORDINATES) name = POINT_NAMES[ordinate];
    }
    if (hasHorizontal) names = translated;
    return hasHorizontal;
}

std::size_t requireOnce(const Names& names, std::string_view name, const std::string& columns) {
    const auto found = std::find(names.begin(), names.end(), name);
    const auto fail = [&](const char* fault) {
        throw SetUpError("--columns " + printable(columns) + ": " + std::string(name) + fault);
    };
    if (found == names.end()) fail(" is missing");
    if (std::find(found + 1, names.end(), name) != names.end()) fail(" occurs twice");
    return static_cast<std::size_t>(found - names.begin());
}

}  // namespace

ColumnLayout::ColumnLayout(Shape shapeOfLines)
    : shape(shapeOfLines),
      ordinateCount(shape == Shape::BOX ? 4 : 3),
      heightOptional(shape == Shape::POINT),
      ordinates(ordinateCount),
      ordinateNames(shape == Shape::BOX ? BOX_NAMES : POINT_NAMES) {
    std::iota(ordinates.begin(), ordinates.end(), std::size_t{X});
}

ColumnLayout::ColumnLayout(Shape shapeOfLines, const std::string& columns, bool isEastFirst)
    : ColumnLayout(shapeOfLines) {
    boost::algorithm::split(names, columns, [](char character) { return character == ','; });
    Names translated = names;
    isByDirection = shape == Shape::POINT && translateDirections(translated, isEastFirst);
    if (shape == Shape::POINT && !occurs(translated, POINT_NAMES[Z])) ordinateCount = Z;
    heightOptional = false;
    ordinates.clear();
    for (std::size_t ordinate = 0; ordinate < ordinateCount; ++ordinate) {
        const std::size_t column = requireOnce(translated, ordinateNames[ordinate], columns);
        ordinates.resize(std::max(ordinates.size(), column + 1), MAX_ORDINATES);
        ordinates[column] = ordinate;
    }
}

void ColumnLayout::nameByDirection(bool isEastFirst, bool isGeographic) {
    ordinateNames[isEastFirst ? X : Y] = isGeographic ? "lon" : "easting";
    ordinateNames[isEastFirst ? Y : X] = isGeographic ? "lat" : "northing";
}

namespace {

// As function objects they are compiled into the loops.
constexpr auto isBlankCharacter = [](char character) { return character == ' ' || character == '\t'; };
constexpr auto endsFirstColumn = [](char character) {
    return isBlankCharacter(character) || character == ',' || character == ';';
};

const char* skipBlanks(const char* position, const char* end) {
    return std::find_if_not(position, end, isBlankCharacter);
}

std::string_view withoutBlanksBehind(const char* begin, const char* end) {
    while (end != begin && isBlankCharacter(end[-1])) --end;
    return {begin, static_cast<std::size_t>(end - begin)};
}

}  // namespace

ColumnScanner::ColumnScanner(std::string_view line, Separator separator)
    : position(skipBlanks(line.data(), line.data() + line.size())),
      end(line.data() + line.size()),
      separatorChar(static_cast<char>(separator)),
      atEnd(position == end) {}

bool ColumnScanner::next(std::string_view& column) {
    if (atEnd) return false;
    if (separatorChar == '\0') settleSeparator();
    const bool isBlank = separatorChar == ' ';
    const char* const begin = position;
    position = isBlank ? std::find_if(begin, end, isBlankCharacter) : std::find(behindQuotes(), end, separatorChar);
    column = withoutBlanksBehind(begin, position);
    atEnd = position == end;
    if (!atEnd) position = skipBlanks(position + 1, end);
    atEnd |= isBlank && position == end;
    return true;
}

void ColumnScanner::settleSeparator() {
    const char* const behind = skipBlanks(std::find_if(behindQuotes(), end, endsFirstColumn), end);
    separatorChar = behind != end && (*behind == ',' || *behind == ';') ? *behind : ' ';
}

// Returns the end of the quotes at the position, or the position if there are none. Inside them a quote is doubled, so
// that it ends one part and begins the next.
const char* ColumnScanner::behindQuotes() const {
    const char* behind = position;
    while (behind != end && *behind == '"') {
        behind = std::find(behind + 1, end, '"');
        if (behind != end) ++behind;
    }
    return behind;
}

namespace {

enum NumberFault : std::size_t { NONE, NOT_A_NUMBER, TOO_LARGE, NOT_FINITE };

constexpr const char* FAULTS[] = {"", " is not a number: ", " is too large: ", " is not finite: "};

// from_chars reports the same error for numbers that are too large and too small. A number that is too small is read as
// zero.
NumberFault readNumberAtLimits(std::string_view text, double& value) {
    value = std::strtod(std::string(text).c_str(), nullptr);
    return std::isfinite(value) ? NONE : TOO_LARGE;
}

NumberFault readNumber(std::string_view text, double& value) {
    if (text.size() > 1 && text.front() == '+' && text[1] != '-') text.remove_prefix(1);
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error == std::errc::invalid_argument || stop != end) return NOT_A_NUMBER;
    if (error == std::errc::result_out_of_range) return readNumberAtLimits(text, value);
    return std::isfinite(value) ? NONE : NOT_FINITE;
}

// Returns the column in words: "column 2 (y)".
std::string columnInWords(const ColumnLayout& layout, std::size_t index) {
    std::string column = "column " + std::to_string(index + 1);
    const std::size_t ordinate = layout.ordinates[index];
    if (ordinate == MAX_ORDINATES) return column;
    return column + " (" + printable(layout.isByDirection ? layout.names[index] : layout.ordinateNames[ordinate]) + ")";
}

}  // namespace

bool readCoordinates(std::string_view line, const ColumnLayout& layout, Separator separator, CoordinateLine& read,
                     std::string& reason) {
    ColumnScanner columns(line, separator);
    std::string_view text;
    read.count = layout.leastCount();
    for (std::size_t index = 0; index < layout.ordinates.size(); ++index) {
        const std::size_t ordinate = layout.ordinates[index];
        const bool isPresent = columns.next(text);
        if (isPresent && ordinate == MAX_ORDINATES) continue;
        const NumberFault fault = isPresent ? readNumber(text, read.value[ordinate]) : NOT_A_NUMBER;
        if (fault == NOT_A_NUMBER && layout.heightOptional && ordinate == Z) break;
        if (fault != NONE) {
            reason = columnInWords(layout, index);
            reason += isPresent ? FAULTS[fault] + ('"' + printable(text, 40) + '"') : " is missing";
            return false;
        }
        read.text[ordinate] = text;
        read.count = std::max(read.count, ordinate + 1);
    }
    read.separator = columns.separator();
    return true;
}

bool isNumber(std::string_view text) {
    double value = 0;
    return readNumber(text, value) != NOT_A_NUMBER;
}

bool isBlank(std::string_view line) { return std::all_of(line.begin(), line.end(), isBlankCharacter); }

}  // namespace crsctl
