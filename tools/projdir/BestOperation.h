#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "tools/projdir/Area.h"
#include "tools/projdir/ClassicText.h"
#include "tools/projdir/ProjContext.h"

namespace ProjDir {

// One of the operations among which PROJ chooses point by point.
struct UsedOperation {
    // "EPSG:1314", as describeSource writes it.
    std::string source;
    // PROJ's text of it, with the projection.
    std::string text;
    // PROJ knows no transformation here and takes both datums for one.
    bool isBallpark = false;
    // The grid that alone makes up the shift, by the name of the installed file; empty when there is none such.
    std::string gridShift;
};

// A point of a CRS, and where PROJ's best operation has it on WGS 84.
struct ReferencePoint {
    // In the registry's axis order and units.
    Coordinates crs{};
    LonLat wgs84;
    // Which of BestOperation::used() PROJ took; the first, where nobody asked.
    std::size_t operation = 0;
};

// What PROJ itself does to bring a CRS to WGS 84 (EPSG:4326) with the grids that are installed.
//
// Borrows the context. One thread at a time.
class BestOperation {
public:
    // PROJ may know no way at all: then there are no points.
    BestOperation(ProjContext& projContext, unsigned int code);

    // The points of the CRS that PROJ has at these places of WGS 84, and where it brings them again; without those
    // that PROJ cannot move.
    std::vector<ReferencePoint> sample(const std::vector<LonLat>& places);
    // The same with the operation of each point, which takes much longer.
    std::vector<ReferencePoint> sampleWithOperations(const std::vector<LonLat>& places);

    // The operations that `sampleWithOperations` has met.
    const std::vector<UsedOperation>& used() const { return operations; }

private:
    bool sampleOne(const LonLat& place, ReferencePoint& point);
    std::size_t lastUsedOperation();

    ProjContext& context;
    ProjPtr<PJ> operation;
    std::vector<UsedOperation> operations;
    std::unordered_map<std::string, std::size_t> indexByName;
};

}  // namespace ProjDir
