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

// With its longitude between -180 and 180. REQUIRES: not beyond a full turn from there.
LonLat foldLongitude(const LonLat& place);

// Whether the two have a point in common; borders count.
bool overlap(const Area& left, const Area& right);

// A measure of what the two have in common, as large as the ground is: half a turn times the difference of two sines.
double commonExtent(const Area& left, const Area& right);

// perSide * perSide points over the area, its borders included. REQUIRES: perSide >= 2.
std::vector<LonLat> sampleArea(const Area& area, int perSide);

}  // namespace ProjDir
