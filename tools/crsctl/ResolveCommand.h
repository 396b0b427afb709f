#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/Crs.h"
#include "CoordinateTransformation/CrsDescriptions.h"
#include "tools/crsctl/Output.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

// A name that works in place of a refused one.
struct Suggestion {
    std::string change;  // the change of the spelling: "as an EPSG code"
    std::string name;
};

// Returns the name nearest to `name` that `works` accepts: the codes of `name` in one of the spellings that the library
// writes, or a name of the configuration. Returns nothing if every such name differs too much.
std::optional<Suggestion> suggest(const std::string& name, const std::set<std::string>& configured,
                                  const std::function<bool(const std::string&)>& works);

// One form in which the library writes a CRS. If the library refuses to write it, `text` is the reason.
struct WrittenForm {
    const char* form;  // in words
    const char* key;   // for programs
    std::string text;
    bool refused;
};

std::vector<WrittenForm> writtenForms(const CoordinateTransformation::AbstractCrs& crs);

// Returns "latitude, longitude", "northing, easting" or, if `eastNorth`, the reverse.
const char* axisOrderText(bool geographic, bool eastNorth);
const char* axisOrderText(const CoordinateTransformation::AbstractCrs& crs);

// Returns "geographic" or "projected".
const char* kindName(const CoordinateTransformation::AbstractCrs& crs);

// Returns "25832" or "25832 and 5783".
std::string codesText(const CoordinateTransformation::AbstractCrs& crs);

// The reason why a name is refused.
enum class Reason { UNKNOWN_SYNTAX, BAD_CODE, NOT_IN_EPSG_FILE, NOT_OFFERED, OTHER };

const char* reasonText(Reason reason);

struct Refusal {
    std::string serviceExceptionCode;  // empty if the failure has none
    std::string text;
    Reason reason;
    std::optional<Suggestion> suggestion;
};

// How a server reads one name.
struct NameReport {
    std::string name;
    // "OGC URN", "configured name" or "none".
    std::string spelling;
    // Whether the configuration has registered the name at start-up.
    bool registered = false;
    // Whether the server offers the CRS. Empty if there is no configuration.
    std::optional<bool> offered;
    // Empty if the name is refused. Valid while the session lives.
    CoordinateTransformation::Crs crs = CoordinateTransformation::NullConstruction();
    std::optional<Refusal> refusal;
    // The description of the CRS, or of the horizontal part of a compound; null if the PROJ directory has none.
    const CoordinateTransformation::CrsDescription* description = nullptr;
};

NameReport reportOn(const std::string& name, const Session& session);

// Writes a report on each name. The exit code is EXIT_REFUSED if a name is refused.
CommandResult resolveCommand(const CommonOptions& common, const std::vector<std::string>& names);

std::string asText(const NameReport& report);

Json asJson(const NameReport& report);

// Returns one line about a refused name, for standard error beside the report.
std::string refusalNote(const NameReport& report);

// Returns one line about a refused name: service exception code, the library's message and the suggestion.
std::string refusalInOneLine(const NameReport& report);

}  // namespace crsctl
