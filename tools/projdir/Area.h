#pragma once

#include <vector>

namespace ProjDir {

// Degrees, east of Greenwich and north of the equator.
struct LonLat {
    double longitude = 0;
    double latitude = 0;
};

// An area of use. It crosses the 180th meridian when `west` is greater than `east`.
struct Area {
    double west = 0;
    double south = 0;
    double east = 0;
    double north = 0;
};

// perSide * perSide points over the area, its borders included. REQUIRES: perSide >= 2.
std::vector<LonLat> sampleArea(const Area& area, int perSide);

}  // namespace ProjDir
