#include "tools/projdir/Area.h"

#include <algorithm>
#include <cmath>

namespace ProjDir {
namespace {

constexpr double FULL_TURN = 360;

double between(double first, double last, int i, int count) { return first + (last - first) * i / (count - 1); }

double fold(double longitude) {
    if (longitude > FULL_TURN / 2) return longitude - FULL_TURN;
    return longitude < -FULL_TURN / 2 ? longitude + FULL_TURN : longitude;
}

double unfoldedEast(const Area& area) { return area.east < area.west ? area.east + FULL_TURN : area.east; }

bool overlapShifted(const Area& left, const Area& right, double shift) {
    return left.west <= unfoldedEast(right) + shift && right.west + shift <= unfoldedEast(left);
}

}  // namespace

LonLat foldLongitude(const LonLat& place) { return {fold(place.longitude), place.latitude}; }

bool overlap(const Area& left, const Area& right) {
    if (left.south > right.north || right.south > left.north) return false;
    return overlapShifted(left, right, 0) || overlapShifted(left, right, FULL_TURN) ||
           overlapShifted(left, right, -FULL_TURN);
}

double commonExtent(const Area& left, const Area& right) {
    const double south = std::max(left.south, right.south);
    const double north = std::min(left.north, right.north);
    if (south >= north) return 0;
    double width = 0;
    for (const double shift : {0.0, FULL_TURN, -FULL_TURN})
        width += std::max(
            0.0, std::min(unfoldedEast(left), unfoldedEast(right) + shift) - std::max(left.west, right.west + shift));
    const auto sine = [](double degrees) { return std::sin(degrees * std::acos(-1) / (FULL_TURN / 2)); };
    return width * (sine(north) - sine(south));
}

std::vector<LonLat> sampleArea(const Area& area, int perSide) {
    const double east = unfoldedEast(area);
    std::vector<LonLat> points;
    for (int row = 0; row < perSide; ++row)
        for (int column = 0; column < perSide; ++column)
            points.push_back(
                {fold(between(area.west, east, column, perSide)), between(area.south, area.north, row, perSide)});
    return points;
}

}  // namespace ProjDir
