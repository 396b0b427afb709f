// Compares the library with results of the classic library, row by row.

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "CoordinateTransformation/Proj4Crs.h"
#include "CoordinateTransformation/TransExecException.h"
#include "proj/Proj4Transformer.h"
#include "proj/classic/ClassicProj.h"
#include "proj/classic/Definition.h"
#include "tests/support/FakeCrs.h"
#include "text/InitFile.h"
#include "text/ParameterList.h"

namespace CoordinateTransformation {
namespace {

const std::string DIRECTORY = COORDTRANS_SOURCE_DIR "/tests/golden";
constexpr double EARTH_RADIUS = 6378137;
constexpr double FULL_TURN = 6.283185307179586;
constexpr double DEGREES_PER_RADIAN = 57.29577951308232;

struct Point {
    double x;
    double y;
    double z;
};

struct Row {
    int number;
    unsigned int source;
    unsigned int target;
    Point from;
    Point to;
};

std::vector<std::string> linesAfterHeader(const std::string& name) {
    std::ifstream file(DIRECTORY + "/" + name);
    std::vector<std::string> lines;
    std::string line;
    for (std::getline(file, line); std::getline(file, line);) lines.push_back(line);
    return lines;
}

std::vector<Row> readRows() {
    std::vector<Row> rows;
    for (std::string& line : linesAfterHeader("transform.csv")) {
        std::replace(line.begin(), line.end(), ',', ' ');
        std::istringstream fields(line);
        Row row{};
        row.number = static_cast<int>(rows.size()) + 1;
        fields >> row.source >> row.target >> row.from.x >> row.from.y >> row.from.z >> row.to.x >> row.to.y >>
            row.to.z;
        EXPECT_FALSE(fields.fail()) << line;
        rows.push_back(row);
    }
    return rows;
}

// Reads the rows that may differ by more than a millimetre, each with its reason.
std::set<int> readKnownDifferences() {
    std::set<int> known;
    for (const std::string& line : linesAfterHeader("known-differences.csv")) {
        const std::size_t comma = line.find(',');
        EXPECT_NE(comma, std::string::npos) << line;
        EXPECT_LT(comma + 10, line.size()) << "no reason given: " << line;
        known.insert(std::stoi(line));
    }
    return known;
}

// Returns the length of the unit of a CRS that is not geographic, from the definitions in this folder.
double metresPerUnit(unsigned int code) {
    static CoordinateTransformation::InitFile definitions(DIRECTORY + "/epsg");
    static const std::map<std::string, double> units = {
        {"", 1}, {"m", 1}, {"km", 1000}, {"ft", 0.3048}, {"us-ft", 1200.0 / 3937.0}};
    const CoordinateTransformation::ParameterList parameters(definitions.find(std::to_string(code)).value());
    return parameters.has("to_meter") ? std::stod(parameters.get("to_meter")) : units.at(parameters.get("units"));
}

// Returns the largest difference between two points in any coordinate, in metres. It is infinite if a coordinate is not
// a number.
double differenceOf(const Point& left, const Point& right, unsigned int code, bool angles) {
    const double unit = angles ? 1 : metresPerUnit(code);
    const double horizontal = angles ? EARTH_RADIUS : unit;
    const double dx = (angles ? std::remainder(left.x - right.x, FULL_TURN) : left.x - right.x) * horizontal;
    const double dy = (left.y - right.y) * horizontal;
    const double dz = (left.z - right.z) * unit;
    return std::isfinite(dx + dy + dz) ? std::max({std::fabs(dx), std::fabs(dy), std::fabs(dz)}) : HUGE_VAL;
}

class GoldenTest : public testing::Test {
protected:
    void SetUp() override {
        const char* const paths[] = {DIRECTORY.c_str()};
        ClassicProj::pj_set_searchpath(1, const_cast<const char**>(paths));
        ASSERT_EQ(rows.size(), 733U);
    }
    void note(const Row& row, double difference) { differences[row.number] = difference; }
    std::size_t countWithin(double limit) const {
        return static_cast<std::size_t>(std::count_if(differences.begin(), differences.end(),
                                                      [limit](const auto& entry) { return entry.second <= limit; }));
    }
    std::string summary() const;
    void expectAgreement();

    const std::vector<Row> rows = readRows();
    // Differences in metres, by row number.
    std::map<int, double> differences;
};

std::string GoldenTest::summary() const {
    std::ostringstream text;
    text << "rows within 1e-6 m: " << countWithin(1e-6) << ", 1e-5 m: " << countWithin(1e-5)
         << ", 1e-3 m: " << countWithin(1e-3) << ", 1 m: " << countWithin(1) << " of " << differences.size();
    for (const auto& [number, difference] : differences)
        if (difference > 1e-6) text << "\nrow " << number << " differs by " << difference << " m";
    return text.str();
}

void GoldenTest::expectAgreement() {
    RecordProperty("rowsWithinMicrometre", static_cast<int>(countWithin(1e-6)));
    RecordProperty("rowsWithinMillimetre", static_cast<int>(countWithin(1e-3)));
    RecordProperty("rowsWithinMetre", static_cast<int>(countWithin(1)));
    EXPECT_EQ(differences.size(), rows.size());
    EXPECT_GE(static_cast<double>(countWithin(1e-5)), 0.99 * static_cast<double>(rows.size())) << summary();
    EXPECT_EQ(countWithin(1), rows.size()) << summary();
    const std::set<int> known = readKnownDifferences();
    for (const auto& [number, difference] : differences)
        EXPECT_EQ(difference > 1e-3, known.count(number) != 0) << "row " << number << "\n" << summary();
}

using ClassicProj::projPJ;

TEST_F(GoldenTest, PjTransformAgrees) {
    std::map<unsigned int, projPJ> definitions;
    const auto definitionOf = [&definitions](unsigned int code) {
        projPJ& definition = definitions[code];
        const std::string init = "+init=epsg:" + std::to_string(code);
        if (definition == nullptr) definition = ClassicProj::pj_init_plus_ctx(nullptr, init.c_str());
        EXPECT_NE(definition, nullptr) << code;
        return definition;
    };
    for (const Row& row : rows) {
        Point point = row.from;
        const projPJ target = definitionOf(row.target);
        const int error =
            ClassicProj::pj_transform(definitionOf(row.source), target, 1, 1, &point.x, &point.y, &point.z);
        EXPECT_EQ(error, 0) << "row " << row.number;
        note(row, differenceOf(point, row.to, row.target, ClassicProj::pj_is_latlong(target) != 0));
    }
    expectAgreement();
}

// Creates CRS in either axis order.
class GoldenCrsTest : public GoldenTest {
protected:
    Proj4Crs crsOf(unsigned int code, bool eastNorth) const {
        Proj4Crs crs(creator, *theProj4Transformer, code, 0, false);
        crs.setAxisOrderEastNorthOrLonLat(eastNorth);
        return crs;
    }
    // A CRS has degrees and its own axis order. The file has radians and easting first.
    static Point toCrs(const Proj4Crs& crs, Point point) {
        const double factor = crs.isGeographic() ? DEGREES_PER_RADIAN : 1;
        point = {point.x * factor, point.y * factor, point.z};
        if (!crs.isAxisOrderEastNorthOrLonLat()) std::swap(point.x, point.y);
        return point;
    }
    static Point fromCrs(const Proj4Crs& crs, Point point) {
        const double factor = crs.isGeographic() ? DEGREES_PER_RADIAN : 1;
        if (!crs.isAxisOrderEastNorthOrLonLat()) std::swap(point.x, point.y);
        return {point.x / factor, point.y / factor, point.z};
    }

    const TestSupport::FakeCreator creator;
};

TEST_F(GoldenCrsTest, TransformToAgrees) {
    for (const Row& row : rows) {
        // The rows take turns in the four combinations of axis orders.
        const Proj4Crs source = crsOf(row.source, row.number % 2 == 0);
        const Proj4Crs target = crsOf(row.target, row.number % 4 < 2);
        Point point = toCrs(source, row.from);
        EXPECT_NO_THROW(source.transformTo(&target, point.x, point.y, point.z)) << "row " << row.number;
        note(row, differenceOf(fromCrs(target, point), row.to, row.target, target.isGeographic()));
    }
    expectAgreement();
}

// A missing height counts as 0, except in geocentric CRS, where transformTo fails.
TEST_F(GoldenCrsTest, TransformToAgreesWithoutHeights) {
    const auto isGeocentric = [](const Proj4Crs& crs) { return static_cast<projPJ>(crs.getProjDef())->isGeocentric; };
    for (const Row& row : rows) {
        const Proj4Crs source = crsOf(row.source, true);
        const Proj4Crs target = crsOf(row.target, true);
        Point point = toCrs(source, row.from);
        Point flat = point;
        if (isGeocentric(source) || isGeocentric(target)) {
            EXPECT_THROW(source.transformTo(&target, flat.x, flat.y), TransExecException) << "row " << row.number;
            continue;
        }
        source.transformTo(&target, point.x, point.y, point.z = 0);
        source.transformTo(&target, flat.x, flat.y);
        EXPECT_EQ(flat.x, point.x) << "row " << row.number;
        EXPECT_EQ(flat.y, point.y) << "row " << row.number;
    }
}

}  // namespace
}  // namespace CoordinateTransformation
