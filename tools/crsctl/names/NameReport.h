#pragma once

#include <optional>
#include <string>
#include <vector>

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/CrsDescriptions.h"
#include "tools/crsctl/names/Suggestion.h"

namespace crsctl {

class Session;

// One form in which a CRS is written back. Where the library refuses to write it, `text` is the reason.
struct WrittenForm {
    std::string form;  // in words
    std::string key;   // for programs
    std::string text;
    bool refused;
};

// What a CRS says about itself.
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

// What a server makes of one name.
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

}  // namespace crsctl
