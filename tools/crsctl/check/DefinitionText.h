#pragma once

#include <string>
#include <vector>

namespace crsctl {

// The parts of a text between commas.
std::vector<std::string> splitAtCommas(const std::string& text);

// Whether a parameter that takes numbers has something else, NaN and infinity included.
bool isBrokenNumber(const std::string& key, const std::string& value);

}  // namespace crsctl
