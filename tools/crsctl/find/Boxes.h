#pragma once

#include <string>

#include "CoordinateTransformation/CrsDescriptions.h"

namespace crsctl {

using CoordinateTransformation::GeographicBox;

// box = number "," number "," number "," number, in the order west, south, east, north. SetUpError, which names the
// text, for another text, and for a box that is none on earth.
GeographicBox readBox(const std::string& text);

// "6,38.76,12.01,84.33", as readBox reads it.
std::string boxInWords(const GeographicBox& box);

// Whether every point of `inner` is in `outer`, either of which may cross the antimeridian.
bool covers(const GeographicBox& outer, const GeographicBox& inner);

// Whether they have a point in common.
bool meet(const GeographicBox& left, const GeographicBox& right);

// The part of the sphere inside, from 0 to 1.
double shareOfTheEarth(const GeographicBox& box);

}  // namespace crsctl
