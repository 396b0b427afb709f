#pragma once

#include <string>
#include <vector>

#include "tools/projdir/Registry.h"

namespace ProjDir {

// What the registry says of a CRS beside its definition.
//
// A plain value.
struct CrsDescription {
    CrsKind kind = CrsKind::OTHER;
    // The area of use in words.
    std::string area;
    // Of the horizontal axes, by the registry's name, and what one of it is in metres, or in radians for angles.
    std::string unit;
    double unitLength = 0;
    std::string datum;
    // "EPSG:6258"; datums that differ by the prime meridian alone have the identifier of the one on Greenwich.
    std::string datumId;
    // Codes that take the place of a deprecated CRS.
    std::vector<unsigned int> replacedBy;
};

}  // namespace ProjDir
