#pragma once

#include <cstddef>
#include <functional>
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

// The parts of a text between commas.
std::vector<std::string> splitAtCommas(const std::string& text);

// Whether a parameter that takes numbers has something else, NaN and infinity included.
bool isBrokenNumber(const std::string& key, const std::string& value);

// Problems in the files of a PROJ directory that a start ignores silently. The places have no file.

// "epsg-axisorder.csv": a last line that is not read because its line end is missing, and codes that stand there with
// both axis orders.
Findings checkAxisOrders(const std::string& text);

// "epsg": codes that are defined twice in different ways, grid files that `isThere` denies, and parameters that should
// be numbers and are not.
Findings checkDefinitions(const std::string& text, const std::function<bool(const std::string& grid)>& isThere);

// Both files of `directory`, with their paths. Grid files are looked for there and in PROJ's own directories.
Findings checkProjDirectory(const std::string& directory);

}  // namespace crsctl
