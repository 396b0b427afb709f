#pragma once

#include <string>
#include <vector>

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/CrsConfigData.h"
#include "tools/crsctl/check/Finding.h"

namespace crsctl {

// An entry whose start succeeds, with the CRS that it registers.
struct ClaimingEntry {
    Place place;
    const CoordinateTransformation::CrsConfigData* data;
    const CoordinateTransformation::AbstractCrs* crs;
};

// Names that a later entry claims and does not get, because an earlier claim answers them with another CRS or another
// axis order.
Findings contestedNames(const std::vector<ClaimingEntry>& entries);

}  // namespace crsctl
