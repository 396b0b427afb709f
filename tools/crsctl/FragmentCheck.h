#pragma once

#include <string>
#include <vector>

#include "CoordinateTransformation/Crs.h"
#include "CoordinateTransformation/CrsConfig.h"
#include "CoordinateTransformation/CrsConfigData.h"
#include "tools/crsctl/ProjDirectoryCheck.h"

namespace crsctl {

// An entry that a server keeps.
struct CheckedEntry {
    Place place;
    CoordinateTransformation::CrsConfigData data;
    // The CRS with the axis order that the name of the entry has. Empty before a start, and if the library refuses the
    // entry.
    CoordinateTransformation::Crs crs = CoordinateTransformation::NullConstruction();
};

// A fragment as a server reads it, with the findings about its text.
struct CheckedFragment {
    std::vector<CheckedEntry> entries;  // in the order in which the server takes them, without repetitions
    Findings findings;
    std::string failure = {};  // the message with which the server refuses a malformed fragment
};

// Adds the entries of a fragment to `config`, as CrsConfig::configure does. The findings of a malformed fragment have
// an error with its place, and no entry is added.
CheckedFragment checkFragment(const std::string& text, CoordinateTransformation::CrsConfig& config);

}  // namespace crsctl
