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
    // The entry that this one repeats and in whose favour it is dropped.
    std::optional<std::size_t> duplicateOf;
};

// A fragment as the server reads it, with what the reading shows.
struct CheckedFragment {
    std::vector<FragmentEntry> entries;  // in the order in which the server takes them
    Findings findings;
    bool wellFormed = true;
    std::string failure;  // with which the server refuses a malformed one
};

CheckedFragment checkFragment(const std::string& text);

// An entry whose start succeeds, with the CRS that it registers.
struct ClaimingEntry {
    Place place;
    const CoordinateTransformation::CrsConfigData* data;
    const CoordinateTransformation::AbstractCrs* crs;
};

// Names that a later entry claims and does not get, because an earlier claim answers them with another CRS or another
// axis order.
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

// Warns of the entries whose CRS has no shift to WGS 84, as far as `hasShift` knows; whose shift is less accurate than
// expected, or leads farther away from PROJ's best operation; and whose area of use does not cover the expected one.
Findings checkDescriptions(const std::vector<CheckedEntry>& entries,
                           const CoordinateTransformation::CrsDescriptions& descriptions,
                           const std::function<bool(unsigned int code)>& hasShift, const Expectations& expected);

// The same with what the settled directory, `directory`, holds. Notes that descriptions are missing which
// the user's own requirements need.
Findings checkDescriptions(const std::vector<CheckedEntry>& entries, const std::string& directory,
                           const Expectations& expected);

// Whether the definition, parameter by parameter, ties its datum to WGS 84.
bool hasShiftToWgs84(const std::string& definition);

// One entry of the configuration, as requests meet it.
struct CheckedEntry {
    Place place;
    std::string name;
    std::string identifier;
    // Empty when the start fails for the entry.
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
    std::string failure;                // what the start fails for; empty when it does not
    std::vector<CheckedEntry> entries;  // without those dropped as duplicates
    Findings findings;
    bool hasErrors = false;
};

// Reads the fragment `text` as a server would, starts the library with it, looks through the PROJ directory and holds
// the CRS to what is expected of them. SetUpError when the library does not even start without it.
ConfigurationReport checkConfiguration(const std::string& file, const std::string& text, const CommonOptions& options,
                                       const Expectations& expected = {});

CommandResult checkCommand(const CommonOptions& common, const std::string& file, const Expectations& expected);

std::string asText(const ConfigurationReport& report);
Json asJson(const ConfigurationReport& report);

}  // namespace crsctl
