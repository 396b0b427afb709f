#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/projdir/Definition.h"

namespace ProjDir {

// The agreement of one definition with PROJ's best operation to WGS 84: horizontal distances in metres.
struct Agreement {
    const CrsOutcome* outcome = nullptr;
    // The largest distance where PROJ knows an operation; if it knows none in the area, the largest anywhere.
    double largest = 0;
    // The largest distance in the area, also where PROJ takes both datums for the same.
    double largestAnywhere = 0;
    // The library's exception; empty if it transformed every point.
    std::string failure;
};

// An error in metres on the ground.
struct Measurement {
    // Infinite if there is no result.
    double distance = 0;
    // The library's exception.
    std::string failure;
};

// A conversion within a datum, compared with the registry's own. It should be exact.
struct Conversion {
    const CrsOutcome* source = nullptr;
    const CrsOutcome* target = nullptr;
    Measurement measured;
    // The error of PROJ's own inverse of the source projection at the same point.
    double inverse = 0;
};

// The transformation of all check points of a CRS to another one and back.
struct RoundTrip {
    const CrsOutcome* outcome = nullptr;
    // Through the base CRS; nothing for a CRS that is not projected, or whose base has no definition.
    std::optional<Measurement> throughBase;
    Measurement throughWgs84;
    // The error of PROJ's own projection and its inverse.
    double inverse = 0;
};

// The error in metres that a conversion or a round trip may have, in addition to that of PROJ's own inverse. Some
// inverse formulas, such as those of equal-area projections, are less accurate.
constexpr double EXACT = 0.001;
// A larger error of PROJ's inverse is no excuse.
constexpr double WORST_INVERSE = 0.1;

bool isAccepted(const Conversion& conversion);
// The way to WGS 84 rotates by small angles, and the way back by their negatives. A point may miss its start by the
// square of the rotation times the earth's radius.
bool isAccepted(const RoundTrip& trip);

// All measurements, in the order of the outcomes.
struct Verification {
    std::vector<Agreement> agreements;
    std::vector<Conversion> conversions;
    std::vector<RoundTrip> roundTrips;
};

// False if the library refuses a definition, or if a conversion or a round trip is not exact.
bool isAccepted(const Verification& verification);

// Measures the definitions in `directory` through the library, as a server uses it: its own reader binds every code,
// and the axis orders are those of the table.
//
// Each CRS is transformed to WGS 84 and compared with the check points of its outcome, and transformed back. Each
// projected CRS is also converted to its base CRS and to its predecessor on the same one, at the centre of its area of
// use; conversions for which the registry has no coordinates are left out.
//
// `advance` is called twice for each outcome. The library accepts one directory in a process. It raises its own
// exceptions for a directory that it refuses.
Verification verifyDirectory(const std::string& directory, const std::vector<CrsOutcome>& outcomes,
                             const std::function<void()>& advance);

}  // namespace ProjDir
