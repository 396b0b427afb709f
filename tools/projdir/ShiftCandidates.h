#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/projdir/Area.h"
#include "tools/projdir/Helmert.h"
#include "tools/projdir/ProjContext.h"

namespace ProjDir {

// An operation of the registry to WGS 84 that "+towgs84" can express.
struct PublishedShift {
    // "EPSG:1314"; "EPSG:5485 + EPSG:1149" for one that leads over another datum.
    std::string source;
    Helmert helmert;
    // In metres, as the registry states it: the sum, for one that leads over another datum.
    std::optional<double> accuracy = {};
};

// The shift of an operation's text, when what moves the datum are geocentric translations, Helmert and
// Molodensky-Badekas transformations, or nothing. Rates of change are left out: PROJ itself has no use for them
// while coordinates come without an epoch.
std::optional<Helmert> readShift(const std::string& operationText);

// The same for an operation of PROJ's with its text. The small angles of "+towgs84" are not enough for a rotation that
// PROJ carries out exactly, by minutes of arc on some islands: the translation makes up for it, to the place where the
// centre of the operation's area comes to lie.
std::optional<Helmert> findShift(const ProjContext& context, const PJ* operation, const std::string& operationText);

// Of an operation or a CRS; the world where the registry has none.
Area readAreaOfUse(const ProjContext& context, const PJ* object);

// Whether what moves the datum, in an operation's text, is one horizontal grid shift in forward direction.
bool isGridShift(const std::string& operationText);

// The identifiers of the registry's operations that `operation` is made of, conversions apart.
std::string describeSource(const ProjContext& context, const PJ* operation);

// What the registry states; nothing where it states none.
std::optional<double> readAccuracy(const ProjContext& context, const PJ* operation);

// What the registry publishes from the datum of `geodeticCrs` to WGS 84, anywhere on earth, in PROJ's order.
std::vector<PublishedShift> findPublishedShifts(const ProjContext& context, const PJ* geodeticCrs);

}  // namespace ProjDir
