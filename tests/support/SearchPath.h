#pragma once

#include <string>
#include <vector>

#include "proj/classic/ClassicProj.h"

// For tests.
namespace TestSupport {

inline void searchOnlyIn(const std::vector<std::string>& directories) {
    std::vector<const char*> paths;
    for (const std::string& directory : directories) paths.push_back(directory.c_str());
    ClassicProj::pj_set_searchpath(static_cast<int>(paths.size()), paths.data());
}

}  // namespace TestSupport
