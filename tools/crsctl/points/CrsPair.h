#pragma once

#include <string>

#include "CoordinateTransformation/Crs.h"
#include "tools/crsctl/points/CoordinateLine.h"
#include "tools/crsctl/points/RowWriter.h"

namespace crsctl {

class Session;

// The CRS from which and to which a run transforms. Threads may share it.
class CrsPair {
public:
    // InputRefused, with the server's words, when it refuses one of the names.
    CrsPair(const Session& session, const std::string& from, const std::string& to);

    const CoordinateTransformation::AbstractCrs& source() const { return *sourceCrs.get(); }
    const CoordinateTransformation::AbstractCrs& target() const { return *targetCrs.get(); }

    // Of the target: those of its configured entry, else what suits its unit. A height above a geographic CRS is taken
    // for metres.
    Decimals decimals(Shape shape) const;
    // The library's reason for a point that it cannot transform, or whose result is not finite.
    std::string refusalOf(const CoordinateLine& point) const;

private:
    CoordinateTransformation::Crs sourceCrs;
    CoordinateTransformation::Crs targetCrs;
    int horizontalDecimals;
};

}  // namespace crsctl
