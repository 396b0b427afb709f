#pragma once

#include <string>
#include <vector>

#include "tools/projdir/DefinitionMaker.h"

namespace ProjDir {

// A grid file that definitions name.
struct GridFile {
    // By the database's name.
    std::string name;
    // Lower-case hexadecimal digits; empty for a file that is not installed.
    std::string sha256;
};

// The grid files of the definitions, in the order of their names, each once. OutputError for an installed one that
// cannot be read.
std::vector<GridFile> listGridFiles(const ProjContext& installed, const std::vector<CrsOutcome>& outcomes);

// The content of "epsg-grids.csv".
std::string writeGridFiles(const std::vector<GridFile>& files);

// A line for each file that is not installed.
std::string writeMissingGrids(const std::vector<GridFile>& files);

// REQUIRES: a readable file; OutputError else.
std::string computeSha256(const std::string& path);

}  // namespace ProjDir
