// Transforms points between pairs of definitions. A point becomes finite, or it fails and stays unchanged.
//
//   input = definition "\n" definition { "\n" x [ " " y [ " " z ] ] }
//
// If the input has no points, the target uses a few of its own.

#include <array>
#include <cmath>

#include "fuzz/Definitions.h"
#include "fuzz/Input.h"

using namespace ClassicProj;

namespace {

constexpr int MOST_POINTS = 16;

struct Point {
    double x = 0;
    double y = 0;
    double z = 0;
};

bool isSame(const Point& a, const Point& b) { return a.x == b.x && a.y == b.y && a.z == b.z; }

bool areNumbers(const Point& point) { return !std::isnan(point.x) && !std::isnan(point.y) && !std::isnan(point.z); }

// A height that is not a number counts as missing and is passed through.
void move(projPJ source, projPJ target, const Point& start) {
    Point moved = start;
    const int error = pj_transform(source, target, 1, 1, &moved.x, &moved.y, &moved.z);
    Fuzz::require(error != 0 || (std::isfinite(moved.x) && std::isfinite(moved.y)));
    Fuzz::require(error == 0 || !areNumbers(start) || isSame(moved, start));
    Fuzz::require(error == 0 || pj_strerrno(error) != nullptr);
    Point flat = start;
    if (pj_transform(source, target, 1, 1, &flat.x, &flat.y, nullptr) == 0)
        Fuzz::require(std::isfinite(flat.x) && std::isfinite(flat.y) && (std::isnan(start.z) || flat.z == start.z));
}

Point readPoint(const std::string& line) {
    std::istringstream numbers(line);
    std::array<std::string, 3> text;
    numbers >> text[0] >> text[1] >> text[2];
    return {std::strtod(text[0].c_str(), nullptr), std::strtod(text[1].c_str(), nullptr),
            std::strtod(text[2].c_str(), nullptr)};
}

void moveAll(projPJ source, projPJ target, std::istream& lines) {
    int points = 0;
    for (std::string line; points < MOST_POINTS && std::getline(lines, line); ++points)
        move(source, target, readPoint(line));
    if (points > 0) return;
    for (const Point& point : {Point{0.15, 0.9, 100}, Point{500000, 5500000, 0}, Point{4e6, 7e5, 4.9e6}, Point{}})
        move(source, target, point);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream lines(Fuzz::text(data, size));
    std::string source;
    std::string target;
    std::getline(lines, source);
    std::getline(lines, target);
    const projPJ from = Fuzz::definitionOf(source);
    const projPJ to = Fuzz::definitionOf(target);
    if (from != nullptr && to != nullptr) moveAll(from, to, lines);
    return 0;
}
