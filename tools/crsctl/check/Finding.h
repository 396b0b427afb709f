#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace crsctl {

// Error: a server does not start, or a definition cannot be used. Warning: something is ignored, dropped or not what
// it looks like. Note: something that may be as it should.
enum class Severity { ERROR, WARNING, NOTE };

// Where in a file: 0 where no place is known.
struct Place {
    std::size_t line = 0;
    std::size_t column = 0;
    std::string element = {};  // "CRS", "SRSList"; empty for the fragment as a whole
    std::string file = {};     // empty: the fragment
};

struct Finding {
    Severity severity;
    Place place;
    std::string text;
};

using Findings = std::vector<Finding>;

// Those of the fragment first, each file in its order; of one place in the order in which they were found.
void sortByPlace(Findings& findings);

}  // namespace crsctl
