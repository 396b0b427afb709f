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

// box = number "," number "," number "," number, in the order west, south, east, north, in degrees. Throws SetUpError,
// which quotes the text, if it has another form or is not a box on the earth.
GeographicBox readBox(const std::string& text);

// Returns "6,38.76,12.01,84.33", the form that readBox reads.
std::string boxText(const GeographicBox& box);

// Returns whether every point of `inner` is in `outer`. Either box may cross the antimeridian.
bool covers(const GeographicBox& outer, const GeographicBox& inner);

// Returns whether the two boxes share a point.
bool intersects(const GeographicBox& left, const GeographicBox& right);

// Returns the part of the sphere inside the box, from 0 to 1.
double shareOfTheEarth(const GeographicBox& box);

using CoordinateTransformation::CrsDescription;
using CoordinateTransformation::CrsDescriptions;

// The conditions of a search. Without any condition every CRS is found.
struct SearchedCrs {
    std::vector<std::string> words;
    std::optional<GeographicBox> area;
    std::optional<CrsDescription::Kind> kind;
};

constexpr CrsDescription::Kind CRS_KINDS[] = {CrsDescription::Kind::GEOGRAPHIC, CrsDescription::Kind::GEOCENTRIC,
                                              CrsDescription::Kind::PROJECTED, CrsDescription::Kind::COMPOUND};

// Returns "geographic", "geocentric", "projected" or "compound".
const char* kindName(CrsDescription::Kind kind);

struct FoundCrs {
    const CrsDescription* crs;
    // Whether the area of use covers the searched area; true if no area is searched.
    bool coversArea;
};

// Returns the CRS that have every word in their name, area, datum or code, are of the searched kind, and have an area
// of use that intersects the searched area. They are ranked in this order:
//
//   - the CRS with the searched code
//   - CRS that are not deprecated
//   - the CRS whose name is the words
//   - CRS with more of the words in their names
//   - CRS that cover the searched area, then smaller areas of use
//   - CRS with a smaller share of other words in the description of their area; CRS whose description has none of the
//     search words count as if all words were searched
//   - shorter names, smaller codes
//
// A search word matches the beginning of a word of the text, in capitals or small letters: "32N" and "32" both match
// "UTM zone 32N".
std::vector<FoundCrs> findCrs(const CrsDescriptions& descriptions, const SearchedCrs& searched);

// Returns the description of a CRS as a table.
std::string descriptionAsText(const CrsDescription& crs, const std::string& indent);

Json descriptionAsJson(const CrsDescription& crs);

// Throws SetUpError if the PROJ directory has no descriptions.
CommandResult findCommand(const CommonOptions& common, const SearchedCrs& searched);

// Returns one line for each CRS.
std::string asText(const std::vector<FoundCrs>& found);
Json asJson(const std::vector<FoundCrs>& found);

}  // namespace crsctl
