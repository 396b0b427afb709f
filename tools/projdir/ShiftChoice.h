#pragma once

#include <functional>
#include <optional>
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
    // In metres, as the registry states it.
    std::optional<double> accuracy;
    // Against PROJ's best operation without grids, where it knows one.
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
    // The grid that PROJ takes at every point; empty when there is none, or none is wanted.
    std::string grid;
    std::optional<double> gridAccuracy;
    // Whether a shift may be fitted.
    bool mayFit = false;
};

// The grid, if there is one. Otherwise, of the published shifts, those that PROJ uses and, unless one of these agrees
// to the centimetre, all that the registry has, the one that agrees best. Where that is not within a metre of PROJ at
// every sample and a shift may be fitted, the best of it and of a translation and a seven-parameter shift that are
// fitted. `listPublished` is asked only when it is needed.
ShiftChoice chooseShift(const ShiftEvidence& evidence,
                        const std::function<std::vector<PublishedShift>()>& listPublished);

// Whether a fitted shift can be one between two datums, and does not only follow what is no shift at all.
bool isSane(const Helmert& helmert);

// "+towgs84=...", "+datum=WGS84", "+nadgrids=..."; empty for no shift.
std::string writeDatumShift(const ShiftChoice& choice);

// For the comment above a definition; empty where there is nothing to say.
std::string describeShift(const ShiftChoice& choice);

}  // namespace ProjDir
