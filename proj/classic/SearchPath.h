#pragma once

#include <filesystem>
#include <proj.h>
#include <string>
#include <vector>

namespace ClassicProj {

// The directories that come before PROJ's own when files are looked for.
//
// Read by every use of PROJ; written only while nothing else runs.
void setSearchDirectories(std::vector<std::string> directories);

// The first directory that holds a regular file `name`, joined with it; empty when none does.
std::filesystem::path findInSearchDirectories(const std::string& name);

// A PROJ context of the library's own: silent, off the network, looking for files in the search directories
// first. Nothing of it is shared with other users of PROJ in the process. Never released.
PJ_CONTEXT* makeContext();

}  // namespace ClassicProj
