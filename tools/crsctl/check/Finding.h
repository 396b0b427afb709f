#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace crsctl {

// Error: a server does not start. Warning: something is ignored, dropped or not what it looks like.
enum class Severity { Error, Warning };

// Where in a fragment: 0 where no place is known.
struct Place {
    std::size_t line = 0;
    std::size_t column = 0;
    std::string element;  // "CRS", "SRSList"; empty for the fragment as a whole
};

struct Finding {
    Severity severity;
    Place place;
    std::string text;
};

using Findings = std::vector<Finding>;

// In the order of the fragment; of one place in the order in which they were found.
void sortByPlace(Findings& findings);

}  // namespace crsctl
