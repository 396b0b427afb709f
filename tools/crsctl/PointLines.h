#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace crsctl {

enum class Separator { AUTOMATIC, BLANK = ' ', COMMA = ',', SEMICOLON = ';' };

// The kind of ordinates that a line has.
enum class Shape { POINT, BOX };

// The ordinates of a point, in the axis order of the CRS: x is the first axis.
enum Ordinate : std::size_t { X, Y, Z };

// A box has four ordinates: minx, miny, maxx and maxy.
constexpr std::size_t MAX_ORDINATES = 4;
using Ordinates = std::array<double, MAX_ORDINATES>;

// The columns of the ordinates in a line.
struct ColumnLayout {
    // The layout without a list of columns: a point with an optional height, or a box, in the first columns.
    explicit ColumnLayout(Shape shapeOfLines);
    // The layout of a list such as "id,x,y,z". A word that is not the name of an ordinate names a column that is
    // copied. Throws SetUpError unless each ordinate occurs once; the z of a point is optional.
    //
    // The ordinates of a point may be named by direction instead: lon, longitude, easting and so on, lat, latitude,
    // northing and so on, and height. Then x is the column of the first axis of the CRS: the east if `isEastFirst`.
    ColumnLayout(Shape shapeOfLines, const std::string& columns, bool isEastFirst = true);

    // Names the ordinates of the output by their directions: "lon" and "lat", or "easting" and "northing".
    // REQUIRES: isByDirection.
    void nameByDirection(bool isEastFirst, bool isGeographic);

    // Returns the ordinate in a column of a line with `count` ordinates, or MAX_ORDINATES if the column has none.
    std::size_t ordinateAt(std::size_t columnIndex, std::size_t count) const {
        return columnIndex < ordinates.size() && ordinates[columnIndex] < count ? ordinates[columnIndex]
                                                                                : MAX_ORDINATES;
    }
    // Returns the least number of ordinates that a line must have.
    std::size_t leastCount() const { return heightOptional ? Z : ordinateCount; }
    // Returns the least number of columns of a line with `count` ordinates.
    std::size_t columnCount(std::size_t count) const { return heightOptional ? count : ordinates.size(); }

    Shape shape;
    std::size_t ordinateCount;
    // Whether the third column is the height only if it is a number.
    bool heightOptional;
    // The ordinate in each column up to the last that has one; MAX_ORDINATES for a column that is copied.
    std::vector<std::size_t> ordinates;
    bool isByDirection = false;
    std::array<std::string_view, MAX_ORDINATES> ordinateNames;
    // The names of the columns; an unknown name is empty.
    std::vector<std::string> names;
};

// Iterates over the columns of one line. If the first column is followed by a comma or a semicolon, perhaps after
// blanks, this is the separator of the line; otherwise blanks and tabs separate. A column between commas or semicolons
// that begins with a quote ends at the next quote that is not doubled.
class ColumnScanner {
public:
    ColumnScanner(std::string_view line, Separator separator);

    // Returns false if there is no further column. After a separator at the end of the line there is an empty column.
    bool next(std::string_view& column);
    // Returns ' ', ',' or ';'. REQUIRES: the first column was read.
    char separator() const { return separatorChar; }

private:
    const char* behindQuotes() const;
    void settleSeparator();

    const char* position;
    const char* end;
    char separatorChar;
    bool atEnd = false;
};

// The ordinates of a line and the text of each.
struct CoordinateLine {
    Ordinates value;
    std::array<std::string_view, MAX_ORDINATES> text;
    std::size_t count;
    char separator;
};

// Reads the ordinates of `line`, which has no line end. Returns false, and sets the reason, if a column is missing, not
// a number, out of range or not finite.
bool readCoordinates(std::string_view line, const ColumnLayout& layout, Separator separator, CoordinateLine& read,
                     std::string& reason);

// Returns whether `text` is a number. It may be too large for a double.
bool isNumber(std::string_view text);

// Returns whether the line has only blanks.
bool isBlank(std::string_view line);

}  // namespace crsctl
