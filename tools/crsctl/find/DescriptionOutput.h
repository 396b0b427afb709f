#pragma once

#include <string>
#include <vector>

#include "tools/crsctl/find/CrsSearch.h"
#include "tools/crsctl/text/Json.h"

namespace crsctl {

// What is known of a CRS, as a table of its own.
std::string descriptionAsText(const CrsDescription& crs, const std::string& indent);

Json descriptionAsJson(const CrsDescription& crs);

// One line for each CRS.
std::string asText(const std::vector<FoundCrs>& found);
Json asJson(const std::vector<FoundCrs>& found);

}  // namespace crsctl
