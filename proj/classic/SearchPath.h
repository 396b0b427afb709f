#pragma once

#include <filesystem>
#include <proj.h>
#include <string>
#include <vector>

namespace ClassicProj {

// The directories that come before PROJ's own when files are looked for. A relative one is taken from where the
// process works now, wherever it works later.
//
// Read by every use of PROJ; written only while nothing else runs.
void setSearchDirectories(std::vector<std::string> directories);

// The first directory that holds a regular file `name`, joined with it; empty when none does.
std::filesystem::path findInSearchDirectories(const std::string& name);

// By their names alone: nothing is looked up on disk.
bool isBelow(const std::filesystem::path& file, const std::filesystem::path& directory);
bool isInSearchDirectories(const std::filesystem::path& file);

// A PROJ context of the library's own: silent, off the network, looking for files in the search directories
// first, then in PROJ's data directories, and nowhere else. Nothing of it is shared with other users of PROJ in
// the process. Never released. Throws std::bad_alloc.
PJ_CONTEXT* makeContext();

}  // namespace ClassicProj
