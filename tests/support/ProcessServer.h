#pragma once

#include <fstream>
#include <memory>
#include <string>

#include "CoordinateTransformation/CoordinateTransformation.h"

// The library as the programs of this folder start it.
namespace ProcessTest {

using CoordinateTransformation::Crs;
using CoordinateTransformation::CrsConfig;

// Longitude and latitude on the datum of BETA2007.gsb, and where its node moves them; the file keeps the shift in
// arc-seconds to the west.
constexpr double GRIDDED_LONGITUDE = 9;
constexpr double GRIDDED_LATITUDE = 50;
constexpr double SHIFTED_LONGITUDE = 9 - 3.761898994445801 / 3600;
constexpr double SHIFTED_LATITUDE = 50 - 4.133027076721191 / 3600;
// PROJ keeps the shifts of a grid in single precision.
constexpr double GRID_TOLERANCE = 1e-10;

// EPSG:4314 through a grid, EPSG:4277 by parameters, and two CRS without a shift.
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

// Any CRS of the PROJ directory, by any name that the library knows; latitude comes first for geographic ones.
inline Point moved(const CrsConfig& config, const std::string& source, const std::string& target, Point point) {
    const Crs from = config.getCreator().createFromName(source, true, false);
    const Crs to = config.getCreator().createFromName(target, true, false);
    from->transformTo(to.get(), point.x, point.y);
    return point;
}

// The same with an array, of which the second point fails.
inline Point movedInArray(const CrsConfig& config, const std::string& source, const std::string& target, Point point) {
    const Crs from = config.getCreator().createFromName(source, true, false);
    const Crs to = config.getCreator().createFromName(target, true, false);
    double points[] = {point.x, point.y, 1e30, 1e30};
    CoordinateTransformation::PointTransformer transformer(*from.get(), *to.get());
    if (transformer.transform(2, points, points + 1, nullptr, 2) != 1) return {0, 0};
    return {points[0], points[1]};
}

}  // namespace ProcessTest
