#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <boost/property_tree/ptree.hpp>

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/Crs.h"
#include "CoordinateTransformation/CrsConfig.h"
#include "CoordinateTransformation/CrsConfigData.h"
#include "tools/crsctl/FindCommand.h"
#include "tools/crsctl/Output.h"
#include "tools/crsctl/ProjDirectoryCheck.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

// An element that the server reads as an entry.
struct FragmentEntry {
    Place place;
    std::string text;
    CoordinateTransformation::CrsConfigData data;
    // The index of the earlier entry that this one repeats. The server drops the repetition.
    std::optional<std::size_t> duplicateOf;
};

// A fragment as the server reads it, with the findings about its text.
struct CheckedFragment {
    std::vector<FragmentEntry> entries;  // in the order in which the server takes them
    Findings findings;
    bool wellFormed = true;
    std::string failure;  // the message with which the server refuses a malformed fragment
};

// Returns an error among the findings for a malformed fragment.
CheckedFragment checkFragment(const std::string& text);

// An entry that the library accepts, and the CRS that it registers.
struct ClaimingEntry {
    Place place;
    const CoordinateTransformation::CrsConfigData* data;
    const CoordinateTransformation::AbstractCrs* crs;
};

// Returns a warning for each name that two entries register with different CRS or axis orders. The first entry keeps
// the name. Also warns of an identifier that is an alias of an earlier entry.
Findings contestedNames(const std::vector<ClaimingEntry>& entries);

// Adds warnings about the text and the attributes of one entry element.
void examineEntry(const boost::property_tree::ptree& entry, const Place& place, Findings& findings);

struct CheckedEntry;

// The requirements on the CRS of a configuration.
struct Expectations {
    double accuracy = 10;  // in metres
    std::optional<GeographicBox> area;
    bool areGiven = false;  // by the user
};

// Returns a warning for each entry whose CRS has no shift to WGS 84 according to `hasShift`, whose shift is less
// accurate than expected, whose shift differs from PROJ's best operation by more than the expected accuracy, or whose
// area of use does not cover the expected area.
Findings checkDescriptions(const std::vector<CheckedEntry>& entries,
                           const CoordinateTransformation::CrsDescriptions& descriptions,
                           const std::function<bool(unsigned int code)>& hasShift, const Expectations& expected);

// Does the same with the descriptions and definitions in the PROJ directory `directory`. Returns a note if the user has
// given requirements and the directory has no descriptions.
Findings checkDescriptions(const std::vector<CheckedEntry>& entries, const std::string& directory,
                           const Expectations& expected);

// Returns whether the definition has a parameter that relates its datum to WGS 84.
bool hasShiftToWgs84(const std::string& definition);

// One entry of the configuration and its effect on requests.
struct CheckedEntry {
    Place place;
    std::string name;
    std::string identifier;
    // The EPSG code. Empty if the library refuses the entry; the axis order is then empty too.
    std::optional<unsigned int> primary;
    unsigned int secondary = 0;
    std::string axisOrder;
    int decimals = 0;
    bool decimalsConfigured = false;
    bool suppressesDuplicates = false;
};

struct ConfigurationReport {
    std::string file;
    bool starts = false;
    std::string failure;                // the reason why the library does not start; empty if it starts
    std::vector<CheckedEntry> entries;  // without duplicates
    Findings findings;
    bool hasErrors = false;
};

// Reads the fragment `text` as a server does, starts the library with it, and checks the PROJ directory and the CRS of
// the entries. Throws SetUpError if the library does not start even without the fragment.
ConfigurationReport checkConfiguration(const std::string& file, const std::string& text, const CommonOptions& options,
                                       const Expectations& expected = {});

CommandResult checkCommand(const CommonOptions& common, const std::string& file, const Expectations& expected);

std::string asText(const ConfigurationReport& report);
Json asJson(const ConfigurationReport& report);

}  // namespace crsctl
