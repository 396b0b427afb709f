#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace crsctl {

// Keeps its keys in the order in which they are written.
using Json = nlohmann::ordered_json;

// The document, indented, with a line end; bytes that are no UTF-8 become U+FFFD.
std::string serialised(const Json& document);

// The same for a value within one line.
std::string serialisedInLine(const Json& value);

}  // namespace crsctl
