// A server's use of the library, from outside: starts it as a server does and transforms one published point. The PROJ
// directory is the argument or, without one, the installed directory, which it prints.

#include <cmath>
#include <cstdio>
#include <exception>
#include <memory>
#include <sstream>
#include <string>

#include "CoordinateTransformation/CoordinateTransformation.h"

using CoordinateTransformation::Crs;
using CoordinateTransformation::CrsConfig;

namespace {

constexpr char OFFERED[] = "<CrsConfiguration><CRS>EPSG:4277</CRS><CRS>EPSG:27700</CRS></CrsConfiguration>";

// Caister water tower, of which Ordnance Survey publishes both pairs in "A guide to coordinate systems in Great
// Britain".
constexpr double LATITUDE = 52.65757030556;
constexpr double LONGITUDE = 1.71792158333;
constexpr double EASTING = 651409.903;
constexpr double NORTHING = 313177.270;
constexpr double TOLERANCE_M = 0.01;

std::unique_ptr<CrsConfig> start(const std::string& projDirectory) {
    std::unique_ptr<CrsConfig> config(CrsConfig::createDefaultConfigOrFromEnvVar());
    config->setConfigProperty("Proj4ConfigDir", projDirectory);
    std::istringstream fragment(OFFERED);
    config->configure(fragment);
    config->init();
    return config;
}

bool meetsThePublishedPoint(const CrsConfig& config) {
    const Crs source = config.getCreator().createFromName("urn:ogc:def:crs:EPSG::4277", true, true);
    const Crs target = config.getCreator().createFromName("EPSG:27700", true, true);
    double x = LATITUDE;
    double y = LONGITUDE;
    source->transformTo(target.get(), x, y);
    std::printf("%.3f %.3f\n", x, y);
    return std::hypot(x - EASTING, y - NORTHING) < TOLERANCE_M;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const std::string installed = CoordinateTransformation::installedProjDirectory();
        std::printf("%s\n", installed.c_str());
        return meetsThePublishedPoint(*start(argc > 1 ? argv[1] : installed)) ? 0 : 1;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
