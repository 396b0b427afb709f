#include "tools/projdir/EllipsoidText.h"

#include <cmath>

#include "text/NumericText.h"
#include "text/ParameterList.h"

namespace ProjDir {

using CoordinateTransformation::ParameterList;
using CoordinateTransformation::readDouble;
using CoordinateTransformation::writeDouble;

namespace {

// In metres: what rounding leaves between two ways of stating one figure, and nothing that can be measured.
constexpr double SAME_AXIS = 1e-6;

// PROJ lists "a=6378137.0" with "b=6356752.314" or "rf=298.257".
ReferenceEllipsoid readNamed(const PJ_ELLPS& named) {
    const ParameterList axes(std::string(named.major) + " " + named.ell);
    const double semiMajor = readDouble(axes.get("a"));
    if (axes.has("b")) return {semiMajor, readDouble(axes.get("b"))};
    return {semiMajor, semiMajor * (1 - 1 / readDouble(axes.get("rf")))};
}

bool isSame(const ReferenceEllipsoid& left, const ReferenceEllipsoid& right) {
    return std::fabs(left.semiMajor - right.semiMajor) < SAME_AXIS &&
           std::fabs(left.semiMinor - right.semiMinor) < SAME_AXIS;
}

std::string writeAxes(const ReferenceEllipsoid& ellipsoid) {
    if (ellipsoid.semiMajor == ellipsoid.semiMinor) return "+R=" + writeDouble(ellipsoid.semiMajor);
    const double inverseFlattening = ellipsoid.semiMajor / (ellipsoid.semiMajor - ellipsoid.semiMinor);
    return "+a=" + writeDouble(ellipsoid.semiMajor) + " +rf=" + writeDouble(std::round(inverseFlattening * 1e9) / 1e9);
}

}  // namespace

ReferenceEllipsoid readEllipsoid(const ProjContext& context, const PJ* crs) {
    const ProjPtr<PJ> ellipsoid(proj_get_ellipsoid(context.get(), crs));
    ReferenceEllipsoid axes;
    if (ellipsoid != nullptr)
        proj_ellipsoid_get_parameters(context.get(), ellipsoid.get(), &axes.semiMajor, &axes.semiMinor, nullptr,
                                      nullptr);
    return axes;
}

std::string writeEllipsoid(const ReferenceEllipsoid& ellipsoid) {
    for (const PJ_ELLPS* named = proj_list_ellps(); named->id != nullptr; ++named)
        if (isSame(ellipsoid, readNamed(*named))) return std::string("+ellps=") + named->id;
    return writeAxes(ellipsoid);
}

}  // namespace ProjDir
