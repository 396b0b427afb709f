#pragma once

#include <fstream>
#include <memory>
#include <string>

#include "CoordinateTransformation/CoordinateTransformation.h"

// Starts the library and transforms points, for the programs of tests/process.
namespace ProcessTest {

using CoordinateTransformation::Crs;
using CoordinateTransformation::CrsConfig;

// A node of the grid BETA2007.gsb, and the same node after the shift. The file has shifts in arc-seconds, positive to
// the west.
constexpr double GRIDDED_LONGITUDE = 9;
constexpr double GRIDDED_LATITUDE = 50;
constexpr double SHIFTED_LONGITUDE = 9 - 3.761898994445801 / 3600;
constexpr double SHIFTED_LATITUDE = 50 - 4.133027076721191 / 3600;
// PROJ stores the shifts of a grid in single precision.
constexpr double GRID_TOLERANCE = 1e-10;

// Writes EPSG:4314 with a grid, EPSG:4277 with shift parameters, and three CRS without a shift.
inline void writeProjDirectory(const std::string& directory) {
    std::ofstream(directory + "/epsg") << "<4326> +proj=longlat +datum=WGS84 +no_defs <>\n"
                                          "<4314> +proj=longlat +ellps=bessel +nadgrids=BETA2007.gsb +no_defs <>\n"
                                          "<4277> +proj=longlat +datum=OSGB36 +no_defs <>\n"
                                          "<25832> +proj=utm +zone=32 +ellps=GRS80 +towgs84=0,0,0 +no_defs <>\n"
                                          "<3857> +proj=merc +a=6378137 +b=6378137 +nadgrids=@null +no_defs <>\n";
    std::ofstream(directory + "/epsg-axisorder.csv") << "4326;ne\n4314;ne\n4277;ne\n25832;en\n3857;en\n";
}

inline std::unique_ptr<CrsConfig> startServer(const std::string& projDirectory) {
    std::unique_ptr<CrsConfig> config(CrsConfig::createDefaultConfigOrFromEnvVar());
    config->setConfigProperty("Proj4ConfigDir", projDirectory);
    config->addCrsConfigData(CoordinateTransformation::CrsConfigData("EPSG:4326"));
    config->init();
    return config;
}

struct Point {
    double x;
    double y;
};

// Transforms a point between two CRS of the PROJ directory. `source` and `target` are any names that the library knows.
// Geographic CRS have latitude first.
inline Point moved(const CrsConfig& config, const std::string& source, const std::string& target, Point point) {
    const Crs from = config.getCreator().createFromName(source, true, false);
    const Crs to = config.getCreator().createFromName(target, true, false);
    from->transformTo(to.get(), point.x, point.y);
    return point;
}

// Like moved(), but with an array of two points, of which the second fails.
inline Point movedInArray(const CrsConfig& config, const std::string& source, const std::string& target, Point point) {
    const Crs from = config.getCreator().createFromName(source, true, false);
    const Crs to = config.getCreator().createFromName(target, true, false);
    double points[] = {point.x, point.y, 1e30, 1e30};
    CoordinateTransformation::PointTransformer transformer(*from.get(), *to.get());
    if (transformer.transform(2, points, points + 1, nullptr, 2) != 1) return {0, 0};
    return {points[0], points[1]};
}

}  // namespace ProcessTest
