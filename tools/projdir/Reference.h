#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "tools/projdir/Area.h"
#include "tools/projdir/RegistryProjection.h"
#include "tools/projdir/ShiftCandidates.h"

namespace ProjDir {

// One of the operations among which PROJ chooses point by point.
struct UsedOperation {
    // "EPSG:1314", as describeSource writes it.
    std::string source;
    // PROJ's text of it.
    std::string text;
    // PROJ knows no transformation here and takes both datums for one.
    bool isBallpark = false;
    // The grid that alone makes up the shift; empty when there is none such.
    std::string gridShift;
    // In metres, as the registry states it.
    std::optional<double> accuracy = {};
    // As "+towgs84" expresses it, if it does.
    std::optional<Helmert> shift = {};
};

// What PROJ does to bring a geodetic CRS to WGS 84 (EPSG:4326): the operations that it finds, and at each place the one
// that PROJ takes there. All CRS on the geodetic one share it; their areas of use decide which operations come first.
//
// Borrows the context. One thread at a time.
class Reference {
public:
    // `availability` says which operations with grids count. PROJ may know no way at all: then nothing moves.
    Reference(const ProjContext& projContext, const PJ* geodeticCrs, PROJ_GRID_AVAILABILITY_USE availability);

    // Operations in the order in which PROJ considers them.
    using Ranking = std::vector<std::size_t>;
    // For a CRS with this area of use: without those that end outside.
    Ranking rank(const Area& area) const;

    struct Move {
        LonLat wgs84;
        // Which of operations() it is.
        std::size_t operation = 0;
    };
    // From the datum of the CRS; nothing where PROJ finds no result. Where no operation is for the place, both datums
    // are taken for one.
    std::optional<Move> move(const LonLat& place, const Ranking& ranking) const;
    // Which of operations() PROJ takes at the place, whether or not it can carry it out.
    std::size_t choose(const LonLat& place, const Ranking& ranking) const;

    // The last one is none: both datums are taken for one.
    const std::vector<UsedOperation>& operations() const { return descriptions; }

private:
    struct Candidate {
        ProjPtr<PJ> operation;
        Area area;
        double accuracy = -1;
        bool isOffshore = false;
        std::string name;
        int stepCount = 1;
        // It moves nothing.
        bool isNull = false;
    };

    Candidate makeCandidate(ProjPtr<PJ> operation) const;
    std::optional<std::size_t> choose(const LonLat& place, const Ranking& ranking,
                                      const std::vector<std::size_t>& excluded) const;
    bool comesFirst(std::size_t left, std::size_t right, const Area& area) const;
    bool isPreferred(const Candidate& candidate, const Candidate& best) const;
    std::optional<Move> moveBy(std::size_t index, const LonLat& place) const;

    const ProjContext& context;
    GeodeticAxes axes;
    std::vector<Candidate> candidates;
    std::vector<UsedOperation> descriptions;
};

// What there is to say of an operation that PROJ uses.
UsedOperation describeUsed(const ProjContext& context, const PJ* operation);

}  // namespace ProjDir
