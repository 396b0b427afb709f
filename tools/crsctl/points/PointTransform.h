#pragma once

#include <array>
#include <string>

#include "CoordinateTransformation/Crs.h"
#include "tools/crsctl/points/PointLine.h"
#include "tools/crsctl/points/RowWriter.h"

namespace crsctl {

class Session;

// The pair of CRS between which points are moved, with the decimal places of the result.
class PointTransform {
public:
    // InputRefused, with what the server says, when it refuses one of the names.
    PointTransform(const Session& session, const std::string& from, const std::string& to);

    // Moves the ordinates in place. False with a reason when the library refuses the point or the result is not
    // finite.
    bool run(std::array<double, ORDINATES>& ordinates, bool hasHeight, std::string& reason) const;

    // Of the target: what its configured entry says, else what suits its unit. A height is taken for metres.
    const Decimals& decimals() const { return decimalsOfTarget; }

private:
    CoordinateTransformation::Crs source;
    CoordinateTransformation::Crs target;
    Decimals decimalsOfTarget;
};

}  // namespace crsctl
