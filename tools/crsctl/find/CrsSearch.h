#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "CoordinateTransformation/CrsDescriptions.h"
#include "tools/crsctl/find/Boxes.h"

namespace crsctl {

using CoordinateTransformation::CrsDescription;
using CoordinateTransformation::CrsDescriptions;

// Which CRS somebody looks for. Without anything, all.
struct SearchedCrs {
    std::vector<std::string> words;
    std::optional<GeographicBox> area;
    std::optional<CrsDescription::Kind> kind;
};

struct FoundCrs {
    const CrsDescription* crs;
    // Whether its area of use covers the searched one; true if none is searched.
    bool coversArea;
};

// The CRS that have every word in name, area, datum or code, are of the kind and have an area of use that meets the
// searched one, best first: the one with the searched code; those that are not deprecated; the one whose name the words
// are; those with more of the words in their names; those that cover the searched area, and among them those with
// smaller areas of use; those with shorter names; by code.
//
// A word is found where a word of the text begins with it, capitals or not: "32N" and "32" are both in "UTM zone 32N".
std::vector<FoundCrs> findCrs(const CrsDescriptions& descriptions, const SearchedCrs& searched);

// "geographic"
const char* kindInWords(CrsDescription::Kind kind);

// REQUIRES: the text is one of kindInWords.
CrsDescription::Kind kindNamed(const std::string& text);

}  // namespace crsctl
