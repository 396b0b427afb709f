#pragma once

#include <map>
#include <string>

#include "tools/projdir/DirectoryDiff.h"

namespace ProjDir {

// What a difference is written with.
struct DiffSides {
    const DirectoryContent& before;
    const DirectoryContent& after;
    const std::map<unsigned int, KnownCrs>& known;
};

// For people: counts, then a line for each code; below a changed one the parameters that went and came.
std::string writeDiffText(const DirectoryDiff& diff, const DiffSides& sides);

// One object: "old", "new", "added", "gone", "changed" and "same". A distance that is not known or not finite is null.
std::string writeDiffJson(const DirectoryDiff& diff, const DiffSides& sides);

}  // namespace ProjDir
