#include "tools/projdir/Area.h"

namespace ProjDir {
namespace {

constexpr double FULL_TURN = 360;

double between(double first, double last, int i, int count) { return first + (last - first) * i / (count - 1); }

double foldLongitude(double longitude) { return longitude > FULL_TURN / 2 ? longitude - FULL_TURN : longitude; }

}  // namespace

std::vector<LonLat> sampleArea(const Area& area, int perSide) {
    const double east = area.east < area.west ? area.east + FULL_TURN : area.east;
    std::vector<LonLat> points;
    for (int row = 0; row < perSide; ++row)
        for (int column = 0; column < perSide; ++column)
            points.push_back({foldLongitude(between(area.west, east, column, perSide)),
                              between(area.south, area.north, row, perSide)});
    return points;
}

}  // namespace ProjDir
