#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace crsctl {

enum class Separator { AUTOMATIC, BLANK, COMMA, SEMICOLON };

// The ordinates of a line.
enum class Shape { POINT, BOX };

// The ordinates of a point, in the axis order of the CRS: x is the first axis.
enum Ordinate : std::size_t { X, Y, Z };

// Those of a box are minx, miny, maxx and maxy.
constexpr std::size_t MOST_ORDINATES = 4;
using Ordinates = std::array<double, MOST_ORDINATES>;

// Where the ordinates of a line are.
struct ColumnLayout {
    // A point with an optional height in the first columns, or a box.
    explicit ColumnLayout(Shape shapeOfLines);
    // From "id,x,y,z": the names of ordinates are where these are, any other word names a column that is carried
    // through. SetUpError unless each ordinate occurs once; a point needs no z.
    //
    // Points may be named by direction instead: lon, longitude, easting and so on, lat, latitude, northing and so on,
    // and height. Then x is the column of the direction that comes first in the CRS: the east if `isEastFirst`.
    ColumnLayout(Shape shapeOfLines, const std::string& columns, bool isEastFirst = true);

    // Names the ordinates of the output by their directions: "lon" and "lat", or "easting" and "northing".
    // REQUIRES: isByDirection.
    void nameByDirection(bool isEastFirst, bool isGeographic);

    const char* ordinateName(std::size_t ordinate) const { return ordinateNames[ordinate]; }
    // The ordinate of a column if the line has `count` of them, else MOST_ORDINATES.
    std::size_t ordinateAt(std::size_t columnIndex, std::size_t count) const;
    std::size_t lastColumn(std::size_t count) const;
    // The least number of ordinates that a line has.
    std::size_t leastCount() const { return heightOptional ? ordinateCount - 1 : ordinateCount; }

    Shape shape;
    std::size_t ordinateCount;
    // The third column is the height where it is a number.
    bool heightOptional;
    // Column of each ordinate, counted from 0.
    std::array<std::size_t, MOST_ORDINATES> column = {0, 1, 2, 3};
    // The ordinates in the order of their columns.
    std::array<std::size_t, MOST_ORDINATES> order = {0, 1, 2, 3};
    bool isByDirection = false;
    std::array<const char*, MOST_ORDINATES> ordinateNames;
    // Names of the columns, empty where none are known.
    std::vector<std::string> names;
};

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
struct CoordinateLine {
    Ordinates value;
    std::array<std::string_view, MOST_ORDINATES> text;
    std::size_t count;
    char separator;
};

// Reads the ordinates of `line`, which ends without a line end. False with a reason when a column is missing, no
// number, out of range or not finite.
bool readCoordinates(std::string_view line, const ColumnLayout& layout, Separator separator, CoordinateLine& read,
                     std::string& reason);

// Whether `text` is a number, even one that is too large.
bool isNumber(std::string_view text);

// Whether the line has only blanks.
bool isBlank(std::string_view line);

}  // namespace crsctl
