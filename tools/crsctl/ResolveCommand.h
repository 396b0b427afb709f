#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/CrsDescriptions.h"
#include "tools/crsctl/Output.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

// A name that works in place of a refused one.
struct Suggestion {
    std::string change;  // how it is written: "as an EPSG code"
    std::string name;
};

// The name nearest to `name` that `works` accepts: its codes in one of the spellings that the library writes, or one of
// the names that the configuration offers. Nothing if the nearest name differs too much.
std::optional<Suggestion> suggest(const std::string& name, const std::set<std::string>& configured,
                                  const std::function<bool(const std::string&)>& works);

// One form in which a CRS is written back. Where the library refuses to write it, `text` is the reason.
struct WrittenForm {
    std::string form;  // in words
    std::string key;   // for programs
    std::string text;
    bool refused;
};

// The properties of a CRS.
struct CrsFacts {
    unsigned int primary;
    unsigned int secondary;
    std::string version;
    std::string alias;
    unsigned int dimension;
    bool geographic;
    std::string axisOrder;
    double unitInMetres;
    std::vector<WrittenForm> forms;
};

CrsFacts factsOf(const CoordinateTransformation::AbstractCrs& crs);

// "latitude, longitude" or "easting, northing", in the order of a CRS's axis flag.
const char* axisOrderWords(bool geographic, bool eastNorth);

// Why a name is refused.
enum class Reason { UNKNOWN_SYNTAX, BAD_CODE, NOT_IN_EPSG_FILE, NOT_OFFERED, OTHER };

const char* wordsFor(Reason reason);

struct Refusal {
    std::string serviceExceptionCode;  // empty when the failure has none
    std::string text;
    Reason reason;
    std::optional<Suggestion> suggestion;
};

// How a server reads one name.
struct NameReport {
    std::string name;
    // "OGC URN", "configured name" or "none".
    std::string spelling;
    // The configuration itself answers: the CRS was made at start-up.
    bool registered = false;
    // Empty when no configuration was given, so that nobody can say.
    std::optional<bool> offered;
    // Either of the two.
    std::optional<CrsFacts> crs;
    std::optional<Refusal> refusal;
    // Of the CRS, of a compound the horizontal part; null if the PROJ directory has none.
    const CoordinateTransformation::CrsDescription* description = nullptr;
};

NameReport reportOn(const std::string& name, const Session& session);

// The report as text: the name, then a line for each finding.
CommandResult resolveCommand(const CommonOptions& common, const std::vector<std::string>& names);

std::string asText(const NameReport& report);

Json asJson(const NameReport& report);

// "25832" or "25832 and 5783".
std::string codesInWords(unsigned int primary, unsigned int secondary);

// null for a secondary code of 0.
Json secondaryCodeAsJson(unsigned int secondary);

// That a name is refused, in one line, where the report itself says the rest.
std::string refusalNote(const NameReport& report);

// Why a name is refused, in one line: service exception code, the library's text and what would help.
std::string refusalInOneLine(const NameReport& report);

}  // namespace crsctl
