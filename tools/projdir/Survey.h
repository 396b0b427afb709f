#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "tools/projdir/BestOperation.h"
#include "tools/projdir/ClassicText.h"
#include "tools/projdir/Reference.h"
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

// What PROJ makes of a CRS with the grids that are installed.
struct InstalledEvidence {
    // Most used first.
    std::vector<OperationShare> shares;
    // Other points than those of the survey.
    std::vector<CheckPoint> checkPoints;
};

// What the registry and PROJ have to say about one CRS, which is not compound, over its area of use.
//
// Borrows the context and the reference. One thread at a time.
class Survey {
public:
    // NotExpressible for a CRS without a classic definition, without an area of use, or of whose points PROJ brings
    // none to WGS 84, and for one whose classic definition PROJ takes for another projection than the registry's.
    // RegistryError when PROJ cannot make the CRS. `geodeticReference` is that of the geodetic CRS of the entry.
    Survey(ProjContext& projContext, const RegistryCrs& crsEntry, const Reference& geodeticReference);

    const ClassicText& text() const { return classicText; }
    bool isNorthFirst() const { return northFirst; }
    std::size_t countPoints() const { return points.size(); }

    // PROJ knows no operation in part of the area, or all over it.
    bool hasUnknownPart() const;
    // Most used first.
    std::vector<OperationShare> countShares() const;
    ShiftEvidence gatherEvidence() const;
    // The operation by a grid that PROJ, by a reference with all grids, takes at every point; nothing when none is.
    std::optional<UsedOperation> findCommonGrid(const Reference& withGrids) const;
    // `installed` is a context with grids.
    InstalledEvidence surveyInstalled(ProjContext& installed) const;

private:
    struct Point {
        // On the datum of the CRS.
        LonLat place;
        LonLat wgs84;
        std::size_t operation = 0;
    };

    void samplePoints();
    std::vector<Point> sample(int perSide) const;
    bool samplePoint(const LonLat& start, Point& point) const;
    std::size_t countKnown() const;
    bool isKnown(const Point& point) const { return !reference.operations()[point.operation].isBallpark; }
    std::vector<ReferencePoint> adaptToCrs(ProjContext& installed, std::vector<ReferencePoint> found) const;

    RegistryCrs entry;
    ProjPtr<PJ> crs;
    ClassicText classicText;
    Area area;
    bool northFirst;
    const Reference& reference;
    Reference::Ranking ranking;
    ClassicProjection definition;
    RegistryProjection projection;
    std::vector<Point> points;
    bool isDense = false;
};

}  // namespace ProjDir
