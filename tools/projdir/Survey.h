#pragma once

#include <cstddef>
#include <vector>

#include "tools/projdir/BestOperation.h"
#include "tools/projdir/ClassicText.h"
#include "tools/projdir/Registry.h"
#include "tools/projdir/ShiftChoice.h"

namespace ProjDir {

// A point to compare the finished definition at.
struct CheckPoint {
    // In the registry's axis order and units.
    Coordinates crs{};
    LonLat wgs84;
    // PROJ knows an operation here.
    bool isKnown = false;
};

// At how many of the points PROJ uses an operation.
struct OperationShare {
    UsedOperation operation;
    std::size_t points = 0;
};

// What the registry and PROJ have to say about one CRS over its area of use.
//
// Borrows the context. One thread at a time.
class Survey {
public:
    // NotExpressible for a CRS without a classic definition, without an area of use, or of whose points PROJ brings
    // none to WGS 84, and for one whose classic definition PROJ takes for another projection than the registry's.
    // RegistryError when PROJ cannot make the CRS.
    Survey(ProjContext& projContext, const RegistryCrs& entry);

    const PJ* crs() const { return registryCrs.get(); }
    const ClassicText& text() const { return classicText; }
    bool isNorthFirst() const { return northFirst; }

    // PROJ knows no operation in part of the area, or all over it.
    bool hasUnknownPart() const;
    // Most used first.
    std::vector<OperationShare> countShares() const;
    // Without a grid.
    ShiftEvidence gatherEvidence() const;
    // The file of the grid that serves at every point; empty when none does.
    std::string findCommonGrid() const;
    // Other points than those of the survey.
    std::vector<CheckPoint> makeCheckPoints();

private:
    void samplePoints();
    void invertPoints(ProjContext& context);
    std::size_t countKnown() const;
    bool isKnown(const ReferencePoint& point) const { return !best.used()[point.operation].isBallpark; }

    ProjPtr<PJ> registryCrs;
    ClassicText classicText;
    Area area;
    bool northFirst;
    BestOperation best;
    std::vector<ReferencePoint> points;
    bool isDense = false;
    // The points on the datum of the CRS.
    std::vector<LonLat> places;
};

}  // namespace ProjDir
