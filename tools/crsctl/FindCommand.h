#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "CoordinateTransformation/CrsDescriptions.h"
#include "tools/crsctl/Output.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

using CoordinateTransformation::GeographicBox;

// box = number "," number "," number "," number, in the order west, south, east, north. SetUpError, which names the
// text, for another text, and for a box that is none on earth.
GeographicBox readBox(const std::string& text);

// "6,38.76,12.01,84.33", as readBox reads it.
std::string boxInWords(const GeographicBox& box);

// Whether every point of `inner` is in `outer`, either of which may cross the antimeridian.
bool covers(const GeographicBox& outer, const GeographicBox& inner);

// Whether the two boxes share a point.
bool meet(const GeographicBox& left, const GeographicBox& right);

// The part of the sphere inside, from 0 to 1.
double shareOfTheEarth(const GeographicBox& box);

using CoordinateTransformation::CrsDescription;
using CoordinateTransformation::CrsDescriptions;

// The CRS to find. Without any condition, all.
struct SearchedCrs {
    std::vector<std::string> words;
    std::optional<GeographicBox> area;
    std::optional<CrsDescription::Kind> kind;
};

constexpr CrsDescription::Kind CRS_KINDS[] = {CrsDescription::Kind::GEOGRAPHIC, CrsDescription::Kind::GEOCENTRIC,
                                              CrsDescription::Kind::PROJECTED, CrsDescription::Kind::COMPOUND};

// "geographic"
const char* kindInWords(CrsDescription::Kind kind);

struct FoundCrs {
    const CrsDescription* crs;
    // Whether its area of use covers the searched one; true if none is searched.
    bool coversArea;
};

// The CRS that have every word in name, area, datum or code, are of the kind, and have an area of use that meets the
// searched one. They are ranked in this order:
//
//   - the CRS with the searched code
//   - CRS that are not deprecated
//   - the CRS whose name is the words
//   - CRS with more of the words in their names
//   - CRS that cover the searched area, smaller areas of use first
//   - CRS of whose description of the area the words are a larger part
//   - shorter names, smaller codes
//
// A word is found where a word of the text begins with it, in capitals or small letters: "32N" and "32" are both in
// "UTM zone 32N".
std::vector<FoundCrs> findCrs(const CrsDescriptions& descriptions, const SearchedCrs& searched);

// The description of a CRS as a table.
std::string descriptionAsText(const CrsDescription& crs, const std::string& indent);

Json descriptionAsJson(const CrsDescription& crs);

// SetUpError if the PROJ directory has no descriptions.
CommandResult findCommand(const CommonOptions& common, const SearchedCrs& searched);

// One line for each CRS.
std::string asText(const std::vector<FoundCrs>& found);
Json asJson(const std::vector<FoundCrs>& found);

}  // namespace crsctl
