#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/crsctl/check/Finding.h"
#include "tools/crsctl/find/Boxes.h"

namespace crsctl {

struct CheckedEntry;

// What the CRS of a configuration are expected to do.
struct Expectations {
    double accuracy = 10;  // in metres
    std::optional<GeographicBox> area;
    bool areGiven = false;  // by the person who asks
};

// Warns of the entries whose CRS has no shift to WGS 84, as far as `hasShift` knows; whose shift is less accurate than
// expected, or leads farther away from PROJ's best operation; and whose area of use does not cover the expected one.
Findings checkDescriptions(const std::vector<CheckedEntry>& entries,
                           const CoordinateTransformation::CrsDescriptions& descriptions,
                           const std::function<bool(unsigned int code)>& hasShift, const Expectations& expected);

// The same with what the settled directory, `directory`, holds. Notes that descriptions are missing which a person's
// own expectations need.
Findings checkDescriptions(const std::vector<CheckedEntry>& entries, const std::string& directory,
                           const Expectations& expected);

// Whether the definition, parameter by parameter, ties its datum to WGS 84.
bool hasShiftToWgs84(const std::string& definition);

}  // namespace crsctl
