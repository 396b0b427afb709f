#include "tools/projdir/EllipsoidText.h"

#include <cmath>

#include "tools/projdir/Numbers.h"

namespace ProjDir {

namespace {

// In metres: what rounding leaves between two ways of stating one figure, and nothing that can be measured.
constexpr double SAME_AXIS = 1e-6;

// text = "a=" number, "b=" number or "rf=" number
double readValue(const std::string& text) { return readNumber(text.substr(text.find('=') + 1)); }

Ellipsoid readNamed(const PJ_ELLPS& named) {
    const double semiMajor = readValue(named.major);
    const std::string second = named.ell;
    const double value = readValue(second);
    return {semiMajor, second.front() == 'b' ? value : semiMajor * (1 - 1 / value)};
}

bool isSame(const Ellipsoid& left, const Ellipsoid& right) {
    return std::fabs(left.semiMajor - right.semiMajor) < SAME_AXIS &&
           std::fabs(left.semiMinor - right.semiMinor) < SAME_AXIS;
}

std::string writeAxes(const Ellipsoid& ellipsoid) {
    if (ellipsoid.semiMajor == ellipsoid.semiMinor) return "+R=" + writeNumber(ellipsoid.semiMajor);
    const double inverseFlattening = ellipsoid.semiMajor / (ellipsoid.semiMajor - ellipsoid.semiMinor);
    return "+a=" + writeNumber(ellipsoid.semiMajor) + " +rf=" + writeNumber(std::round(inverseFlattening * 1e9) / 1e9);
}

}  // namespace

Ellipsoid readEllipsoid(const ProjContext& context, const PJ* crs) {
    const PjPtr ellipsoid(proj_get_ellipsoid(context.get(), crs));
    Ellipsoid axes;
    if (ellipsoid != nullptr)
        proj_ellipsoid_get_parameters(context.get(), ellipsoid.get(), &axes.semiMajor, &axes.semiMinor, nullptr,
                                      nullptr);
    return axes;
}

std::string writeEllipsoid(const Ellipsoid& ellipsoid) {
    for (const PJ_ELLPS* named = proj_list_ellps(); named->id != nullptr; ++named)
        if (isSame(ellipsoid, readNamed(*named))) return std::string("+ellps=") + named->id;
    return writeAxes(ellipsoid);
}

}  // namespace ProjDir
