#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace crsctl {

enum class Separator { AUTOMATIC, BLANK, COMMA, SEMICOLON };

// The three ordinates of a point, in the order of the CRS: x is the first axis.
enum Ordinate : std::size_t { X, Y, Z, ORDINATES };
constexpr const char* ORDINATE_NAMES[ORDINATES] = {"x", "y", "z"};

constexpr std::size_t NO_COLUMN = static_cast<std::size_t>(-1);

// What stands in which column of a line.
struct ColumnLayout {
    // Column of each ordinate, counted from 0.
    std::array<std::size_t, ORDINATES> column = {0, 1, 2};
    // Without a layout of the user's own, the third column is the height where it is a number.
    bool heightOptional = true;
    // Names of the columns, empty where none are known.
    std::vector<std::string> names;

    // The ordinate of a column, ORDINATES for a column that is carried through.
    std::size_t ordinateOf(std::size_t columnIndex) const;
    std::size_t lastOrdinateColumn() const;
};

// From "id,x,y,z": "x", "y" and "z" are the ordinates, any other word names a column that is carried through.
// SetUpError unless x and y occur once and z at most once.
ColumnLayout layoutFrom(const std::string& columns);

// Walks over the columns of one line. A line's separator is what follows its first column: a comma or a semicolon,
// blanks around it aside, else blanks and tabs. A column between commas or semicolons that begins with a quote
// ends with the next quote that is not doubled.
class ColumnScanner {
public:
    ColumnScanner(std::string_view line, Separator separator);

    // False when there is no further column. A separator at the end of a line leaves an empty column behind it.
    bool next(std::string_view& column);
    // ' ', ',' or ';', known after the first column.
    char separator() const { return separatorChar; }

private:
    std::string_view nextBlankSeparated();
    std::string_view nextSeparated();
    const char* endOfSeparated() const;
    const char* endOfQuoted() const;
    void settleSeparator();

    const char* position;
    const char* end;
    char separatorChar;
    bool atEnd = false;
};

// The ordinates of a line, with the text that each was read from.
struct PointLine {
    std::array<double, ORDINATES> value;
    std::array<std::string_view, ORDINATES> text;
    bool hasHeight;
    char separator;
};

// Reads the ordinates of `line`, which ends without a line end. False with a reason when the line is no point: a
// column is missing, no number, out of range or not finite.
bool readPoint(std::string_view line, const ColumnLayout& layout, Separator separator, PointLine& point,
               std::string& reason);

// Whether nothing but blanks stands in the line.
bool isBlank(std::string_view line);

}  // namespace crsctl
