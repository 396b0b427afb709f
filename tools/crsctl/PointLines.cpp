#include "tools/crsctl/PointLines.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <utility>

#include "tools/common/Text.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

using Tools::printable;

namespace {

enum CharacterKind : unsigned char { OF_COLUMN, BLANK, SEPARATOR };

constexpr std::array<CharacterKind, 256> characterKinds() {
    std::array<CharacterKind, 256> kinds{};
    kinds[' '] = kinds['\t'] = BLANK;
    kinds[','] = kinds[';'] = SEPARATOR;
    return kinds;
}

constexpr auto CHARACTER_KINDS = characterKinds();

CharacterKind kindOf(char character) { return CHARACTER_KINDS[static_cast<unsigned char>(character)]; }

bool isBlankCharacter(char character) { return kindOf(character) == BLANK; }

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

// from_chars reports the same error for numbers that are too large and too small. A number that is too small is read as
// zero.
NumberFault readNumberAtLimits(std::string_view text, double& value) {
    value = std::strtod(std::string(text).c_str(), nullptr);
    return std::isfinite(value) ? NumberFault::NONE : NumberFault::OUT_OF_RANGE;
}

constexpr std::size_t MOST_EXACT_DIGITS = 15;
constexpr double POWERS_OF_TEN[MOST_EXACT_DIGITS + 1] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                         1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

const char* readDigits(const char* position, const char* end, std::uint64_t& number) {
    for (; position != end && *position >= '0' && *position <= '9'; ++position)
        number = 10 * number + static_cast<std::uint64_t>(*position - '0');
    return position;
}

// Reads up to 15 digits with or without a point, the form of most coordinates, in half the time of from_chars. The
// integer and the power of ten are exact, so the quotient is the nearest double. Returns false for other texts.
bool readShortDecimal(std::string_view text, double& value) {
    const char* const end = text.data() + text.size();
    const bool negative = !text.empty() && text.front() == '-';
    const char* const begin = text.data() + (negative ? 1 : 0);
    if (static_cast<std::size_t>(end - begin) > MOST_EXACT_DIGITS + 1) return false;
    std::uint64_t number = 0;
    const char* const point = readDigits(begin, end, number);
    const bool hasPoint = point != end && *point == '.';
    const char* const fraction = hasPoint ? point + 1 : point;
    if (readDigits(fraction, end, number) != end) return false;
    const std::size_t decimals = static_cast<std::size_t>(end - fraction);
    const std::size_t digits = static_cast<std::size_t>(point - begin) + decimals;
    if (digits == 0 || digits > MOST_EXACT_DIGITS) return false;
    const double magnitude = static_cast<double>(number) / POWERS_OF_TEN[decimals];
    value = negative ? -magnitude : magnitude;
    return true;
}

NumberFault readNumber(std::string_view text, double& value) {
    if (readShortDecimal(text, value)) return NumberFault::NONE;
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
    const std::size_t index = layout.column[ordinate];
    const std::string name = layout.isByDirection ? layout.names[index] : layout.ordinateName(ordinate);
    return "column " + std::to_string(index + 1) + " (" + printable(name) + ")";
}

std::string faultInWords(NumberFault fault, const ColumnLayout& layout, std::size_t ordinate, std::string_view text) {
    const std::string subject = columnName(layout, ordinate);
    if (fault == NumberFault::OUT_OF_RANGE) return subject + " is too large: " + quoted(text);
    if (fault == NumberFault::NOT_FINITE) return subject + " is not finite: " + quoted(text);
    return subject + " is not a number: " + quoted(text);
}

std::string missingColumn(const ColumnLayout& layout, std::size_t index) {
    const std::size_t ordinate = layout.ordinateAt(index, layout.ordinateCount);
    const std::string name =
        ordinate == MAX_ORDINATES ? "column " + std::to_string(index + 1) : columnName(layout, ordinate);
    return name + " is missing";
}

bool occurs(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

constexpr std::array<const char*, MAX_ORDINATES> POINT_NAMES = {"x", "y", "z", ""};
constexpr std::array<const char*, MAX_ORDINATES> BOX_NAMES = {"minx", "miny", "maxx", "maxy"};

enum class Direction { EAST, NORTH, UP };

constexpr std::pair<const char*, Direction> DIRECTION_NAMES[] = {
    {"lon", Direction::EAST},     {"long", Direction::EAST},      {"longitude", Direction::EAST},
    {"lng", Direction::EAST},     {"easting", Direction::EAST},   {"east", Direction::EAST},
    {"lat", Direction::NORTH},    {"latitude", Direction::NORTH}, {"northing", Direction::NORTH},
    {"north", Direction::NORTH},  {"z", Direction::UP},           {"height", Direction::UP},
    {"elevation", Direction::UP}, {"altitude", Direction::UP}};

std::optional<Direction> directionNamed(const std::string& name) {
    for (const auto& [known, direction] : DIRECTION_NAMES)
        if (Tools::editDistance(name, known) == 0) return direction;
    return std::nullopt;
}

// Replaces names of directions with x, y and z. Returns false, and changes nothing, if the list has x or y, or if it
// has no horizontal direction.
bool translateDirections(std::vector<std::string>& names, bool isEastFirst) {
    if (occurs(names, POINT_NAMES[X]) || occurs(names, POINT_NAMES[Y])) return false;
    std::vector<std::string> translated = names;
    bool hasHorizontal = false;
    for (std::string& name : translated) {
        const std::optional<Direction> direction = directionNamed(name);
        if (!direction) continue;
        const bool isFirst = (*direction == Direction::EAST) == isEastFirst;
        name = POINT_NAMES[*direction == Direction::UP ? Z : isFirst ? X : Y];
        hasHorizontal |= *direction != Direction::UP;
    }
    if (hasHorizontal) names = translated;
    return hasHorizontal;
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

ColumnLayout::ColumnLayout(Shape shapeOfLines)
    : shape(shapeOfLines),
      ordinateCount(shape == Shape::BOX ? 4 : 3),
      heightOptional(shape == Shape::POINT),
      ordinateNames(shape == Shape::BOX ? BOX_NAMES : POINT_NAMES) {}

ColumnLayout::ColumnLayout(Shape shapeOfLines, const std::string& columns, bool isEastFirst)
    : ColumnLayout(shapeOfLines) {
    names = splitAtCommas(columns);
    std::vector<std::string> ordinates = names;
    isByDirection = shape == Shape::POINT && translateDirections(ordinates, isEastFirst);
    if (shape == Shape::POINT && !occurs(ordinates, ordinateName(Z))) ordinateCount = 2;
    heightOptional = false;
    for (std::size_t i = 0; i < ordinateCount; ++i) column[i] = requireOnce(ordinates, ordinateName(i), columns);
    std::sort(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(ordinateCount),
              [this](std::size_t a, std::size_t b) { return column[a] < column[b]; });
}

void ColumnLayout::nameByDirection(bool isEastFirst, bool isGeographic) {
    const char* const east = isGeographic ? "lon" : "easting";
    const char* const north = isGeographic ? "lat" : "northing";
    ordinateNames[X] = isEastFirst ? east : north;
    ordinateNames[Y] = isEastFirst ? north : east;
}

std::size_t ColumnLayout::ordinateAt(std::size_t columnIndex, std::size_t count) const {
    for (std::size_t ordinate = 0; ordinate < count; ++ordinate)
        if (column[ordinate] == columnIndex) return ordinate;
    return MAX_ORDINATES;
}

std::size_t ColumnLayout::lastColumn(std::size_t count) const {
    return *std::max_element(column.begin(), column.begin() + static_cast<std::ptrdiff_t>(count));
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
    while (behind != end && kindOf(*behind) == OF_COLUMN) ++behind;
    behind = skipBlanks(behind, end);
    separatorChar = behind != end && kindOf(*behind) == SEPARATOR ? *behind : ' ';
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

bool readCoordinates(std::string_view line, const ColumnLayout& layout, Separator separator, CoordinateLine& read,
                     std::string& reason) {
    ColumnScanner columns(line, separator);
    const std::size_t last = layout.lastColumn(layout.ordinateCount);
    read.count = layout.leastCount();
    for (std::size_t index = 0; index <= last; ++index) {
        const std::size_t ordinate = layout.ordinateAt(index, layout.ordinateCount);
        const bool optional = ordinate == Z && layout.heightOptional;
        std::string_view text;
        if (!columns.next(text)) {
            if (!optional) reason = missingColumn(layout, index);
            if (!optional) return false;
            break;
        }
        if (ordinate == MAX_ORDINATES) continue;
        const NumberFault fault = readNumber(text, read.value[ordinate]);
        if (fault == NumberFault::NOT_A_NUMBER && optional) break;
        if (fault != NumberFault::NONE) reason = faultInWords(fault, layout, ordinate, text);
        if (fault != NumberFault::NONE) return false;
        read.text[ordinate] = text;
        if (optional) read.count = layout.ordinateCount;
    }
    read.separator = columns.separator();
    return true;
}

bool isNumber(std::string_view text) {
    double value = 0;
    return readNumber(text, value) != NumberFault::NOT_A_NUMBER;
}

bool isBlank(std::string_view line) { return std::all_of(line.begin(), line.end(), isBlankCharacter); }

}  // namespace crsctl
