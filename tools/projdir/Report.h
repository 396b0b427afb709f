#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "tools/projdir/Verification.h"

namespace ProjDir {

// The bounds in metres of the classes into which distances are sorted. The last class has no bound.
constexpr std::array<double, 5> AGREEMENT_CLASSES = {0.01, 1, 2, 5, 10};

// The number of distances in each class.
using Distribution = std::array<std::size_t, AGREEMENT_CLASSES.size() + 1>;
Distribution countByClass(const std::vector<double>& distances);

// "0.123 m", or "no coordinates" for a distance that is not finite.
std::string writeMetres(double metres);

// A line of a list: a distance, a name, and the reason if it is not empty.
std::string writeDistanceLine(const std::string& distance, const std::string& name, const std::string& reason);

// The number of definitions, by the kind of their shift, and of the CRS that are left out.
std::string writeSummary(const std::vector<CrsOutcome>& outcomes);

// One line for each CRS without a definition, with the reason.
std::string writeLeftOut(const std::vector<CrsOutcome>& outcomes);

// The distribution of the agreement, and the worst twenty with their reasons.
std::string writeAgreement(const std::vector<Agreement>& agreements);

// The agreement, the conversions within a datum and the round trips, with a line for each of these that is not exact.
std::string writeVerification(const Verification& verification);

// The distances of the definitions from PROJ's best operations without grids, by which the shifts are chosen.
std::string writeDistances(const std::vector<CrsOutcome>& outcomes);

// The distribution of the accuracies that the registry states for the shifts.
std::string writeAccuracies(const std::vector<CrsOutcome>& outcomes);

// The reason for the distance between a definition and PROJ, and a remedy if there is one.
std::string explain(const Agreement& agreement);

// The report as text: summary, distances, accuracies, measurements if there are any, every code beyond ten metres and
// every CRS left out, with their reasons.
std::string writeReport(const RegistryVersion& version, const std::vector<CrsOutcome>& outcomes,
                        const Verification& verification);

// The report as JSON, with one line for each CRS. docs/proj-directory.md describes the members. Unknown values are left
// out; a distance that is not finite is null.
std::string writeJsonReport(const RegistryVersion& version, const std::vector<CrsOutcome>& outcomes,
                            const Verification& verification);

// A page that shows a JSON report: a map, a histogram and a table. It needs no other file, and treats every name as
// plain text.
std::string writeHtmlReport(const std::string& jsonReport);

}  // namespace ProjDir
