#pragma once

#include <filesystem>
#include <string>

namespace CoordinateTransformation {

// The places of an installed PROJ directory, as the build was configured.
struct ProjDirectoryPlaces {
    // From the folder of the shared library, or of a program with the static library.
    std::string relative;
    std::string absolute;
};

// The directory relative to the folder of `file` if it exists, otherwise the absolute place.
std::string chooseProjDirectory(const std::filesystem::path& file, const ProjDirectoryPlaces& places);

}  // namespace CoordinateTransformation
