#pragma once

#include <string>
#include <vector>

#include "tools/projdir/Registry.h"
#include "tools/projdir/Verification.h"

namespace ProjDir {

// How many definitions there are, by the origin of their shift, and how many CRS were left out.
std::string writeSummary(const std::vector<CrsOutcome>& outcomes);

// A line for each CRS without a definition, with the reason.
std::string writeLeftOut(const std::vector<CrsOutcome>& outcomes);

// The distribution of the agreement and the worst twenty, each with its reason.
std::string writeAgreement(const std::vector<Agreement>& agreements);

// Why a definition is far from what PROJ computes, and what would bring it closer.
std::string explain(const Agreement& agreement);

// All of it: summary, agreement if there is any, every code beyond ten metres with its reason, every CRS left out
// with its reason.
std::string writeReport(const RegistryVersion& version, const std::vector<CrsOutcome>& outcomes,
                        const std::vector<Agreement>& agreements);

}  // namespace ProjDir
