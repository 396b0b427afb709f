#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "CoordinateTransformation/CrsConfig.h"
#include "tools/crsctl/FindCommand.h"
#include "tools/crsctl/FragmentCheck.h"
#include "tools/crsctl/NamesCommand.h"
#include "tools/crsctl/Output.h"
#include "tools/crsctl/ProjDirectoryCheck.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

// Returns a warning for each name that two of the entries register with different CRS or axis orders. The first entry
// keeps the name. `names` are those that the CRS of the entries have without aliases. Also warns of an identifier that
// is an alias of an earlier entry.
Findings contestedNames(const std::vector<CheckedEntry>& entries, const std::vector<NamesOfCrs>& names);

// The requirements on the CRS of a configuration.
struct Expectations {
    double accuracy = 10;  // in metres
    std::optional<GeographicBox> area;
    bool areGiven = false;  // by the user
};

// Returns the requirements that a CRS does not meet: that there is a shift to WGS 84, that it is as accurate as
// expected and leads as near to PROJ's best operation, and that the area of use covers the expected area. A CRS without
// a description (null) meets all but the first.
std::vector<std::string> unmetExpectations(bool hasShift, const CrsDescription* description,
                                           const Expectations& expected);

// Returns whether the definition has a parameter that relates its datum to WGS 84.
bool hasShiftToWgs84(const std::string& definition);

struct ConfigurationReport {
    std::string file;
    std::unique_ptr<CoordinateTransformation::CrsConfig> config;  // of the CRS of the entries
    std::string failure = {};  // the reason why the library does not start; empty if it starts
    std::vector<CheckedEntry> entries = {};
    Findings findings = {};

    bool starts() const { return failure.empty(); }
    std::size_t count(Severity severity) const;
};

// Reads the fragment `text` as a server does, starts the library with it, and checks the PROJ directory and the CRS of
// the entries. Throws SetUpError if the library does not start even without the fragment.
ConfigurationReport checkConfiguration(const std::string& file, const std::string& text, const CommonOptions& options,
                                       const Expectations& expected = {});

CommandResult checkCommand(const CommonOptions& common, const std::string& file, const Expectations& expected);

std::string asText(const ConfigurationReport& report);
Json asJson(const ConfigurationReport& report);

void to_json(Json& json, const CheckedEntry& entry);
void to_json(Json& json, const Finding& finding);

}  // namespace crsctl
