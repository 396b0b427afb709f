#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/common/ProgressBar.h"
#include "tools/projdir/CrsUnderTest.h"

namespace ProjDir {

// How far something is off, in metres on the ground.
struct Measurement {
    // Infinite where there is no result.
    double distance = 0;
    // What the library raised.
    std::string failure;
};

// A change of projection within a datum, which is exact: against the registry's own.
struct Conversion {
    const CrsOutcome* source = nullptr;
    const CrsOutcome* target = nullptr;
    Measurement measured;
    // How far PROJ's own inverse of the source projection is off there.
    double inverse = 0;
};

// From a CRS and back to it, at all points that the definition is checked at.
struct RoundTrip {
    const CrsOutcome* outcome = nullptr;
    // To the geographic CRS that it is based on; nothing for a CRS that is not projected, or whose base is not there.
    std::optional<Measurement> throughBase;
    Measurement throughWgs84;
    // How far PROJ's own way to the datum and back is off.
    double inverse = 0;
};

// How far a conversion or a round trip may be off, in metres, beyond what PROJ's own inverse is off there. Some inverse
// formulas, such as those of equal-area projections, are less exact than that.
constexpr double EXACT = 0.001;
// An inverse that is off by more excuses nothing.
constexpr double WORST_INVERSE = 0.1;

bool isAccepted(const Conversion& conversion);

// The step to WGS 84 is linear in its rotations, and the way back takes their transpose for their inverse: a point may
// come back the square of the rotation times the earth's radius away.
double toleranceThroughWgs84(const RoundTrip& trip);
bool isAccepted(const RoundTrip& trip);

struct DatumMeasurements {
    std::vector<Conversion> conversions;
    std::vector<RoundTrip> roundTrips;
};

// Every projected CRS of the outcomes to the geographic CRS that it is based on and to its neighbour in code order on
// the same one, at the centre of its area of use; and every CRS to `wgs84`, longitude first, and back. The library
// makes them with `creator`. Conversions for which the registry has no coordinates are left out.
DatumMeasurements measureWithinDatums(const CoordinateTransformation::CrsCreator& creator,
                                      const CoordinateTransformation::AbstractCrs& wgs84,
                                      const std::vector<CrsOutcome>& outcomes, Tools::ProgressBar& progress);

}  // namespace ProjDir
