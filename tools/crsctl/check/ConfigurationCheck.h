#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/crsctl/check/DescriptionCheck.h"
#include "tools/crsctl/check/Finding.h"
#include "tools/crsctl/start/Session.h"
#include "tools/crsctl/text/Json.h"

namespace crsctl {

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

std::string asText(const ConfigurationReport& report);
Json asJson(const ConfigurationReport& report);

}  // namespace crsctl
