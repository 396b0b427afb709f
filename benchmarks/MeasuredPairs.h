#pragma once

// The pairs of CRS that the benchmarks of transformations measure, and points for each.

#include <cstddef>
#include <random>
#include <vector>

#include <proj.h>

struct Point {
    double x;
    double y;
};

// A pair of CRS, the area of its points, and the operation of PROJ that the library creates for it. The area is in the
// units of the source, with easting or longitude first.
struct MeasuredPair {
    const char* source;
    const char* target;
    Point southWest;
    Point northEast;
    const char* operation;
    PJ_DIRECTION direction;
};

inline constexpr MeasuredPair PAIRS[] = {
    {"25832", "4326", {280000, 5235000}, {920000, 6100000}, "+proj=utm +zone=32 +ellps=GRS80 +units=m", PJ_INV},
    {"4326", "25832", {6, 47}, {15, 55}, "+proj=utm +zone=32 +ellps=GRS80 +units=m", PJ_FWD},
    {"25832",
     "3857",
     {280000, 5235000},
     {920000, 6100000},
     "+proj=pipeline +step +inv +proj=utm +zone=32 +ellps=GRS80 +units=m +step +proj=webmerc +units=m +ellps=WGS84",
     PJ_FWD},
    {"31467",
     "25832",
     {3280000, 5235000},
     {3920000, 6100000},
     "+proj=pipeline +step +inv +proj=tmerc +lat_0=0 +lon_0=9 +k=1 +x_0=3500000 +y_0=0 +ellps=bessel +units=m "
     "+step +proj=cart +a=6377397.155 +b=6356078.962818189 +step +proj=helmert +convention=position_vector +x=598.1 "
     "+y=73.7 +z=418.2 +rx=0.202 +ry=0.045 +rz=-2.455 +s=6.7 +step +inv +proj=cart +a=6378137 +b=6356752.314140356 "
     "+step +proj=utm +zone=32 +ellps=GRS80 +units=m",
     PJ_FWD},
    {"4326", "3857", {-180, -80}, {180, 80}, "+proj=webmerc +units=m +ellps=WGS84", PJ_FWD},
    {"2154",
     "4326",
     {100000, 6050000},
     {1200000, 7110000},
     "+proj=lcc +lat_0=46.5 +lon_0=3 +lat_1=49 +lat_2=44 +x_0=700000 +y_0=6600000 +ellps=GRS80 +units=m",
     PJ_INV},
};

inline constexpr double RADIANS_PER_DEGREE = 0.017453292519943295;

inline std::vector<Point> drawPoints(const MeasuredPair& pair, std::size_t count) {
    std::mt19937_64 random(4326);
    std::uniform_real_distribution<double> x(pair.southWest.x, pair.northEast.x);
    std::uniform_real_distribution<double> y(pair.southWest.y, pair.northEast.y);
    std::vector<Point> points(count);
    for (Point& point : points) point = {x(random), y(random)};
    return points;
}
