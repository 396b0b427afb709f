#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace crsctl {

// Error: a server does not start, or a definition cannot be used. Warning: something is ignored, dropped or misleading.
// Note: something that may be intended.
enum class Severity { ERROR, WARNING, NOTE };

// A place in a file. An unknown line or column is 0.
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

// Sorts by file, the fragment first, and then by line and column. Findings of one place keep their order.
void sortByPlace(Findings& findings);

// Returns whether the parameter `key` takes numbers and `value` has something else, such as NaN or infinity.
bool isBrokenNumber(const std::string& key, const std::string& value);

// Problems in the files of a PROJ directory that a start ignores silently.

// Returns the problems of "epsg-axisorder.csv": a last line that is not read because its line end is missing, and codes
// with both axis orders. The places have no file. REQUIRES: the library accepts the text.
Findings checkAxisOrders(const std::string& text);

// Returns the problems of "epsg": codes with two different definitions, grid files that do not exist according to
// `exists`, and parameters that must be numbers but are not. The places have no file.
Findings checkDefinitions(const std::string& text, const std::function<bool(const std::string& grid)>& exists);

// Returns the problems of both files of `directory`. The places have the paths of the files. Grid files are looked up
// in `directory` and in PROJ's own directories.
Findings checkProjDirectory(const std::string& directory);

}  // namespace crsctl
