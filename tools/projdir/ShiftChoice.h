#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tools/projdir/HelmertFit.h"
#include "tools/projdir/ShiftCandidates.h"

namespace ProjDir {

enum class ShiftKind { WGS_84, UNKNOWN, PUBLISHED, FITTED, GRID };

// The datum shift of one definition.
struct ShiftChoice {
    ShiftKind kind = ShiftKind::UNKNOWN;
    Helmert helmert;
    // Where it comes from: identifiers of operations, or the file of a grid.
    std::string source;
    FitParameters fitted = FitParameters::TRANSLATION;
    // Against PROJ's best operation, where it knows one.
    Residual residual;
};

// What a choice is made of.
struct ShiftEvidence {
    // Where PROJ knows an operation.
    std::vector<ShiftSample> samples;
    // These are at least half of all points of the area.
    bool coversHalf = false;
    // What PROJ itself uses in the area and "+towgs84" can express.
    std::vector<PublishedShift> used;
    // The grid that PROJ uses at every point; empty when there is none, or none is wanted.
    std::string grid;
};

// Of the published shifts, those that PROJ uses and, unless one of these agrees to the centimetre, all that the
// registry has, the one that agrees best, if it is within a metre of PROJ at every sample. Otherwise the grid.
// Otherwise the best of that published shift and of a translation and a seven-parameter shift that are fitted.
// `listPublished` is asked only when it is needed.
ShiftChoice chooseShift(const ShiftEvidence& evidence,
                        const std::function<std::vector<PublishedShift>()>& listPublished);

// "+towgs84=...", "+datum=WGS84", "+nadgrids=..."; empty for no shift.
std::string writeDatumShift(const ShiftChoice& choice);

// For the comment above a definition; empty where there is nothing to say.
std::string describeShift(const ShiftChoice& choice);

}  // namespace ProjDir
