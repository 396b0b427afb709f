#include "tools/crsctl/find/Boxes.h"

#include <cmath>
#include <string_view>

#include "text/NumericText.h"
#include "tools/common/Text.h"
#include "tools/crsctl/start/Failures.h"

namespace crsctl {

using Tools::printable;

using CoordinateTransformation::takeDouble;
using CoordinateTransformation::writeDouble;

namespace {

constexpr double FULL_TURN = 360;

double widthOf(const GeographicBox& box) {
    const double width = box.east - box.west;
    return width < 0 ? width + FULL_TURN : width;
}

// How far to the east `to` lies from `from`.
double eastwards(double from, double to) {
    const double way = std::fmod(to - from, FULL_TURN);
    return way < 0 ? way + FULL_TURN : way;
}

bool isWithin(double value, double limit) { return value >= -limit && value <= limit; }

bool isOnEarth(const GeographicBox& box) {
    return isWithin(box.west, 180) && isWithin(box.east, 180) && isWithin(box.south, 90) && isWithin(box.north, 90) &&
           box.south <= box.north;
}

bool takeNumber(std::string_view& text, double& number) {
    const auto taken = takeDouble(text);
    number = taken.value_or(0);
    return taken.has_value();
}

bool takeComma(std::string_view& text) {
    if (text.empty() || text.front() != ',') return false;
    text.remove_prefix(1);
    return true;
}

}  // namespace

GeographicBox readBox(const std::string& text) {
    std::string_view rest = text;
    GeographicBox box{};
    const bool isRead = takeNumber(rest, box.west) && takeComma(rest) && takeNumber(rest, box.south) &&
                        takeComma(rest) && takeNumber(rest, box.east) && takeComma(rest) &&
                        takeNumber(rest, box.north) && rest.empty();
    if (!isRead) throw SetUpError("--area " + printable(text) + ": four numbers W,S,E,N are needed");
    if (!isOnEarth(box)) throw SetUpError("--area " + printable(text) + ": no box of longitudes and latitudes");
    return box;
}

std::string boxInWords(const GeographicBox& box) {
    return writeDouble(box.west) + "," + writeDouble(box.south) + "," + writeDouble(box.east) + "," +
           writeDouble(box.north);
}

bool covers(const GeographicBox& outer, const GeographicBox& inner) {
    const bool isAround = widthOf(outer) >= FULL_TURN;
    return outer.south <= inner.south && outer.north >= inner.north &&
           (isAround || eastwards(outer.west, inner.west) + widthOf(inner) <= widthOf(outer));
}

bool meet(const GeographicBox& left, const GeographicBox& right) {
    return left.south <= right.north && right.south <= left.north &&
           (eastwards(left.west, right.west) <= widthOf(left) || eastwards(right.west, left.west) <= widthOf(right));
}

double shareOfTheEarth(const GeographicBox& box) {
    constexpr double RADIANS = 0.017453292519943295;
    return widthOf(box) / FULL_TURN * (std::sin(box.north * RADIANS) - std::sin(box.south * RADIANS)) / 2;
}

}  // namespace crsctl
