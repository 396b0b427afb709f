#pragma once

#include <string>

namespace CoordinateTransformation {

// Returns when `error`, PROJ's error number after it was given `directory` to search, is 0; else Misconfigured
// with the directory and PROJ's text.
void requireNoProjError(int error, const std::string& directory);

}  // namespace CoordinateTransformation
