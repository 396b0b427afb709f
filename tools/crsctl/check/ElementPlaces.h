#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace crsctl {

// Where the start tag of an element stands, lines and columns counted from 1.
struct ElementPlace {
    std::string name;
    std::size_t line;
    std::size_t column;
};

// The start tags of a fragment in document order. The property tree keeps no places; this walk over the same text
// meets the same elements in the same order.
// REQUIRES: the fragment has been read without an error.
std::vector<ElementPlace> elementPlaces(std::string_view fragment);

}  // namespace crsctl
