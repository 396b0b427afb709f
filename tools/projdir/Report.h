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

// The same for all that was measured: the agreement, conversions within a datum, round trips, and each of these two
// that is not exact.
std::string writeVerification(const Verification& verification);

// How far the definitions are from PROJ's best operations that need no grid, by which shifts are chosen.
std::string writeDistances(const std::vector<CrsOutcome>& outcomes);

// How many shifts are as accurate as that, as the registry states it.
std::string writeAccuracies(const std::vector<CrsOutcome>& outcomes);

// Why a definition is far from what PROJ computes, and what would bring it closer.
std::string explain(const Agreement& agreement);

// All of it: summary, accuracies, what was measured if anything was, every code beyond ten metres with its reason,
// every CRS left out with its reason.
std::string writeReport(const RegistryVersion& version, const std::vector<CrsOutcome>& outcomes,
                        const Verification& verification);

}  // namespace ProjDir
