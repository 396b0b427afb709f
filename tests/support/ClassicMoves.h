#pragma once

#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "proj/classic/ClassicProj.h"
#include "tests/support/Geodesy.h"

// Calls the classic interface with definitions as text and with single points. Angles are in degrees here.
namespace TestSupport {

inline void searchOnlyIn(const std::vector<std::string>& directories) {
    std::vector<const char*> paths;
    for (const std::string& directory : directories) paths.push_back(directory.c_str());
    ClassicProj::pj_set_searchpath(static_cast<int>(paths.size()), paths.data());
}

inline ClassicProj::projPJ define(const std::string& text) {
    const ClassicProj::projPJ definition = ClassicProj::pj_init_plus_ctx(nullptr, text.c_str());
    EXPECT_NE(definition, nullptr) << text << ": " << ClassicProj::pj_strerrno(*ClassicProj::pj_get_errno_ref());
    return definition;
}

enum class Heights { WITH, WITHOUT };

// Transforms `point` with pj_transform. Returns 0, or the error number.
inline int move(const std::string& source, const std::string& target, Point& point, Heights heights = Heights::WITH) {
    const ClassicProj::projPJ from = define(source);
    const ClassicProj::projPJ to = define(target);
    const double in = ClassicProj::pj_is_latlong(from) != 0 ? RADIANS : 1;
    const double out = ClassicProj::pj_is_latlong(to) != 0 ? RADIANS : 1;
    double x = point.x * in;
    double y = point.y * in;
    double* const z = heights == Heights::WITH ? &point.z : nullptr;
    const int error = ClassicProj::pj_transform(from, to, 1, 1, &x, &y, z);
    point.x = x / (error == 0 ? out : in);
    point.y = y / (error == 0 ? out : in);
    return error;
}

inline Point moved(const std::string& source, const std::string& target, Point point, Heights heights = Heights::WITH) {
    EXPECT_EQ(move(source, target, point, heights), 0) << source << " to " << target << " at " << point;
    return point;
}

// A row of a table: a point in the coordinates of `source` and of `target`.
struct Move {
    const char* name;
    std::string source;
    std::string target;
    Point from;
    Point to;
};

inline void PrintTo(const Move& row, std::ostream* stream) { *stream << row.source << " to " << row.target; }

inline std::string nameOfMove(const testing::TestParamInfo<Move>& info) { return info.param.name; }

// In degrees and in metres, about a micrometre on the ground.
constexpr double ANGLE_TOLERANCE = 1e-11;
constexpr double LENGTH_TOLERANCE = 1e-6;

inline void expectNear(const Point& actual, const Point& expected, double tolerance = LENGTH_TOLERANCE) {
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, LENGTH_TOLERANCE);
}

}  // namespace TestSupport
