// The points of the Geospatial Integrity of Geoscience Software tests, through the directory that the build makes of
// the whole registry. tests/golden/README.md names their source.

#include <cmath>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CoordinateTransformation/CoordinateTransformation.h"

namespace {

using CoordinateTransformation::AbstractCrs;
using CoordinateTransformation::CrsConfig;

constexpr char POINTS[] = COORDTRANS_SOURCE_DIR "/tests/golden/gigs.csv";
constexpr std::size_t POINT_COUNT = 554;
constexpr int ROUND_TRIPS = 1000;
// The inverse of the Lambert azimuthal equal-area projection in PROJ 9.1 has an error of a third of a millimetre, which
// adds up.
constexpr char INEXACT_INVERSE[] = "5110";

struct Point {
    double x = 0;
    double y = 0;
    double z = 0;
};

// Easting or longitude first; degrees for angles.
struct GigsPoint {
    std::string test;
    unsigned int source = 0;
    unsigned int target = 0;
    Point from;
    Point to;
    double tolerance = 0;
    double roundTripTolerance = 0;
    // Not a number if heights do not count.
    double heightTolerance = 0;

    std::string name() const {
        return "GIGS " + test + ", EPSG:" + std::to_string(source) + " to EPSG:" + std::to_string(target) + " at " +
               std::to_string(from.x) + " " + std::to_string(from.y);
    }
};

GigsPoint readPoint(const std::string& line) {
    std::istringstream stream(line);
    std::vector<std::string> cells;
    for (std::string cell; std::getline(stream, cell, ',');) cells.push_back(cell);
    if (cells.size() < 11) throw std::runtime_error("too few cells: " + line);
    const auto number = [&cells](std::size_t i) { return std::stod(cells[i]); };
    const auto code = [&cells](std::size_t i) { return static_cast<unsigned int>(std::stoul(cells[i])); };
    return {cells[0],
            code(1),
            code(2),
            {number(3), number(4), number(5)},
            {number(6), number(7), number(8)},
            number(9),
            number(10),
            cells.size() > 11 ? number(11) : NAN};
}

std::vector<GigsPoint> readPoints() {
    std::ifstream file(POINTS);
    std::vector<GigsPoint> points;
    std::string line;
    for (std::getline(file, line); std::getline(file, line);) points.push_back(readPoint(line));
    return points;
}

class GigsTest : public testing::Test {
protected:
    GigsTest() {
        config->setConfigProperty("Proj4ConfigDir", PROJ_FULL);
        config->init();
    }

    std::unique_ptr<AbstractCrs> bind(unsigned int code) const {
        std::unique_ptr<AbstractCrs> crs(config->getCreator().createFromCode(code, 0, true));
        crs->setAxisOrderEastNorthOrLonLat(true);
        return crs;
    }

    static Point move(const AbstractCrs& source, const AbstractCrs& target, Point point) {
        source.transformTo(&target, point.x, point.y, point.z);
        return point;
    }

    const std::unique_ptr<CrsConfig> config{CrsConfig::createConfigFromId("proj4")};
    const std::vector<GigsPoint> points = readPoints();
};

TEST_F(GigsTest, HasThePoints) { EXPECT_EQ(points.size(), POINT_COUNT); }

TEST_F(GigsTest, MeetsEveryPointWithinItsTolerance) {
    for (const GigsPoint& point : points) {
        const Point moved = move(*bind(point.source), *bind(point.target), point.from);
        EXPECT_NEAR(moved.x, point.to.x, point.tolerance) << point.name();
        EXPECT_NEAR(moved.y, point.to.y, point.tolerance) << point.name();
        if (!std::isnan(point.heightTolerance)) {
            EXPECT_NEAR(moved.z, point.to.z, point.heightTolerance) << point.name();
        }
    }
}

TEST_F(GigsTest, BringsEveryPointBackAThousandTimes) {
    for (const GigsPoint& point : points) {
        const std::unique_ptr<AbstractCrs> source = bind(point.source);
        const std::unique_ptr<AbstractCrs> target = bind(point.target);
        Point moved = move(*source, *target, point.from);
        const Point first = moved;
        const int trips = point.test == INEXACT_INVERSE ? 1 : ROUND_TRIPS;
        for (int i = 0; i < trips; ++i) moved = move(*source, *target, move(*target, *source, moved));
        EXPECT_NEAR(moved.x, first.x, point.roundTripTolerance) << point.name();
        EXPECT_NEAR(moved.y, first.y, point.roundTripTolerance) << point.name();
    }
}

}  // namespace
