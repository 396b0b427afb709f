#pragma once

#include <string>

namespace crsctl {

// The name under which "-" is spoken of.
constexpr char STANDARD_INPUT[] = "standard input";

// What messages call the file `path`.
std::string inputName(const std::string& path);

// The whole content of the file `path`, of standard input for "-"; of a text beyond any fragment as much as shows that.
// SetUpError with the system's reason.
std::string readTextFile(const std::string& path);

}  // namespace crsctl
