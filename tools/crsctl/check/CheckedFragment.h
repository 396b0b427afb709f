#pragma once

#include <optional>
#include <string>
#include <vector>

#include <boost/property_tree/ptree.hpp>

#include "CoordinateTransformation/CrsConfigData.h"
#include "tools/crsctl/check/Finding.h"

namespace crsctl {

// An element that the server reads as an entry.
struct FragmentEntry {
    Place place;
    std::string text;
    CoordinateTransformation::CrsConfigData data;
    // The entry that this one repeats and in whose favour it is dropped.
    std::optional<std::size_t> duplicateOf;
};

// A fragment as the server reads it, with what the reading shows.
struct CheckedFragment {
    std::vector<FragmentEntry> entries;  // in the order in which the server takes them
    Findings findings;
    bool wellFormed = true;
    std::string failure;  // with which the server refuses a malformed one
};

CheckedFragment checkFragment(const std::string& text);

}  // namespace crsctl
