#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "tools/projdir/Reference.h"

namespace ProjDir {

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
