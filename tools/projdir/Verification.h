#pragma once

#include <array>
#include <string>
#include <vector>

#include "tools/common/ProgressBar.h"
#include "tools/projdir/DatumConversions.h"
#include "tools/projdir/DefinitionMaker.h"

namespace ProjDir {

// How one definition agrees with PROJ's best operation to WGS 84. Distances are horizontal and in metres.
struct Agreement {
    const CrsOutcome* outcome = nullptr;
    // The largest distance where PROJ knows an operation; where it knows none at all, anywhere.
    double largest = 0;
    // The largest distance anywhere in the area, also where PROJ takes both datums for one.
    double largestAnywhere = 0;
    // What the library raised; empty when it moved every point.
    std::string failure;
};

// All that is measured, in the order of the outcomes.
struct Verification {
    std::vector<Agreement> agreements;
    DatumMeasurements withinDatums;
};

// False when the library refuses a definition, or when a conversion within a datum or a round trip is not exact.
bool isAccepted(const Verification& verification);

// Measures the definitions in `directory` through the library as a server uses it: every code is bound by its own
// reader and takes its axis order from the table. Points go from each CRS to WGS 84, against the check points of the
// outcomes, and back, and to CRS on the same datum. The library settles its directory once in a process, so this can
// be called for one directory. `progress` takes two steps for each outcome.
//
// Raises the library's exceptions for a directory that it does not accept.
Verification verifyDirectory(const std::string& directory, const std::vector<CrsOutcome>& outcomes,
                             Tools::ProgressBar& progress);

// The bounds of the classes in which agreement is stated, in metres; the last class has none.
constexpr std::array<double, 5> AGREEMENT_CLASSES = {0.01, 1, 2, 5, 10};
constexpr double FAR_OFF = 10;

// How many of the distances lie in each class.
using Distribution = std::array<std::size_t, AGREEMENT_CLASSES.size() + 1>;
Distribution countByClass(const std::vector<double>& distances);

}  // namespace ProjDir
