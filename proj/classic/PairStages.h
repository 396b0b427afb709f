#pragma once

#include <string>
#include <vector>

#include "proj/classic/Definition.h"

namespace ClassicProj {

// A PROJ operation by its text, run forwards or backwards. Grid shifts are stages of their own, so that all
// pairs can share the open grids.
struct StageText {
    std::string text;
    bool backwards = false;
    bool isGridShift = false;
};

// What moves a point from one CRS to another, in the classic order: source to geodetic coordinates, geoid,
// datum, geoid, target. Empty when nothing changes. Geoids count only for points with heights.
std::vector<StageText> writeStages(const Definition& source, const Definition& target, bool withHeights);

}  // namespace ClassicProj
