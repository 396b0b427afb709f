#pragma once

#include <string>
#include <utility>
#include <vector>

namespace crsctl {

// Key and value of each parameter of a definition such as "+proj=utm +zone=32", in order. Blanks around "=" and ","
// do not count.
using Parameters = std::vector<std::pair<std::string, std::string>>;

Parameters readParameters(const std::string& definition);

// The parts of a text between commas.
std::vector<std::string> splitAtCommas(const std::string& text);

// Whether a parameter that takes numbers has something else, NaN and infinity included.
bool isBrokenNumber(const std::string& key, const std::string& value);

}  // namespace crsctl
