#pragma once

#include <string>

namespace ProjDir {

// A page that shows the JSON of a report: a map, a histogram and a table. It holds all that it needs, and whatever the
// names in it hold stays text.
std::string writeHtmlReport(const std::string& jsonReport);

}  // namespace ProjDir
