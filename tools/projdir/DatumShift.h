#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "tools/projdir/ProjString.h"

namespace ProjDir {

// An operation to WGS 84: a published one, or one of those among which PROJ chooses point by point.
struct Operation {
    // "EPSG:1314"; "EPSG:5485 + EPSG:1149" for a concatenated operation.
    std::string source;
    // PROJ knows no transformation here and takes both datums for the same.
    bool isBallpark = false;
    // The grid, if the operation is one horizontal grid shift and no other; else empty.
    std::string gridShift;
    // In metres, as the registry states it; the sum for a concatenated operation.
    std::optional<double> accuracy = {};
    // The operation as "+towgs84" expresses it; nothing if it cannot.
    std::optional<Helmert> shift = {};
};

// The shift of an operation's text whose datum steps are geocentric translations, Helmert and Molodensky-Badekas
// transformations, or none; nothing for any other text. Rates of change do not count: PROJ ignores them for coordinates
// without an epoch.
std::optional<Helmert> readShift(const std::string& operationText);

// The shift of an operation with this text. "+towgs84" has small angles, and on some islands PROJ rotates exactly by
// minutes of arc. The translation is then corrected at the centre of the operation's area.
std::optional<Helmert> findShift(const ProjContext& context, const PJ* operation, const std::string& operationText);

// The grid if the operation's only datum step is a forward horizontal grid shift; else empty.
std::string findGridShift(const std::string& operationText);

// Every operation with a shift that the registry has from the datum of `geodeticCrs` to WGS 84, anywhere on earth, in
// PROJ's order.
std::vector<Operation> findPublishedShifts(const ProjContext& context, const PJ* geodeticCrs);

// PROJ's operations from a geodetic CRS to WGS 84 (EPSG:4326) and its rule for choosing one at each place. All CRS on
// one geodetic CRS share them; the area of use of each decides the order.
//
// One thread at a time. Borrows the context.
class Reference {
public:
    // `availability` decides which operations with grids count. PROJ may have no operation; then no place has a result.
    Reference(const ProjContext& projContext, const PJ* geodeticCrs, PROJ_GRID_AVAILABILITY_USE availability);

    // Indices of operations in PROJ's order.
    using Ranking = std::vector<std::size_t>;
    // For a CRS with this area of use, without the operations whose areas do not overlap it.
    Ranking rank(const Area& area) const;

    struct Move {
        // On the datum of the CRS.
        LonLat place;
        LonLat wgs84;
        // An index of operations().
        std::size_t operation = 0;
    };
    // Transforms a place on the datum of the CRS; nothing where PROJ has no result. Where no operation applies, both
    // datums count as the same.
    std::optional<Move> move(const LonLat& place, const Ranking& ranking) const;
    // The index of the operation that PROJ chooses at the place among those that are not excluded, whether or not it
    // can compute it.
    std::size_t choose(const LonLat& place, const Ranking& ranking, const Ranking& excluded = {}) const;

    // The last one represents the absence of an operation.
    const std::vector<Operation>& operations() const { return descriptions; }

private:
    struct Candidate {
        ProjPtr<PJ> operation;
        Area area;
        bool isOffshore = false;
        std::string name;
        int stepCount = 1;
        // In metres; -1 if the registry states none.
        double accuracy = -1;
        bool isNull = false;
    };

    void addCandidate(ProjPtr<PJ> operation);
    bool comesFirst(std::size_t left, std::size_t right, const Area& area) const;

    const ProjContext& context;
    GeodeticAxes axes;
    std::vector<Candidate> candidates;
    std::vector<Operation> descriptions;
};

// A point of a CRS and where PROJ's best operation has it on WGS 84.
struct ReferencePoint {
    // In the registry's axis order and units.
    Coordinates crs{};
    LonLat wgs84;
    // An index of BestOperation::used(); 0 if operations were not asked for.
    std::size_t operation = 0;
};

// PROJ's own transformation of a CRS to WGS 84 (EPSG:4326) with the installed grids.
//
// One thread at a time. Borrows the context.
class BestOperation {
public:
    // PROJ may have no operation; then there are no points.
    BestOperation(ProjContext& projContext, unsigned int code);

    // PROJ's coordinates in the CRS of places on WGS 84, and their places by PROJ's forward operation. Points that PROJ
    // cannot transform are left out. The operation of each point, if it is wanted, takes much longer.
    std::vector<ReferencePoint> sample(const std::vector<LonLat>& places, bool withOperations = false);

    // The operations of all points that `sample` has returned with them.
    const std::vector<Operation>& used() const { return operations; }

private:
    std::size_t lastUsedOperation();

    ProjContext& context;
    ProjPtr<PJ> operation;
    std::vector<Operation> operations;
    std::unordered_map<std::string, std::size_t> indexByName;
};

enum class ShiftKind { WGS_84, UNKNOWN, PUBLISHED, FITTED, GRID };

// The datum shift of one definition.
struct ShiftChoice {
    ShiftKind kind = ShiftKind::UNKNOWN;
    Helmert helmert;
    // Identifiers of operations, or the file of a grid.
    std::string source;
    FitParameters fitted = FitParameters::TRANSLATION;
    // In metres, as the registry states it.
    std::optional<double> accuracy;
    // The distance from PROJ's best operation without grids, where PROJ has one.
    Residual residual;
};

// The data for the choice of a shift.
struct ShiftEvidence {
    // Where PROJ knows an operation.
    std::vector<ShiftSample> samples;
    // Whether the samples are at least half of all points of the area.
    bool coversHalf = false;
    // The operations that PROJ uses in the area and "+towgs84" can express.
    std::vector<Operation> used;
    // The grid shift that PROJ chooses at every point; null if there is none or none is wanted.
    const Operation* grid = nullptr;
    // Whether a shift may be fitted.
    bool mayFit = false;
};

// Returns the grid if there is one, else the published shift that agrees best with the samples. The shifts that PROJ
// uses come first; unless one of them agrees within a centimetre, all of the registry are compared. If the best one is
// more than a metre off at a sample and `mayFit` is set, a fitted translation and a fitted seven-parameter shift
// compete with it. `listPublished` is called only when it is needed.
ShiftChoice chooseShift(const ShiftEvidence& evidence, const std::function<std::vector<Operation>()>& listPublished);

// Whether the parameters of a fitted shift are plausible between two datums.
bool isSane(const Helmert& helmert);

// "+towgs84=...", "+datum=WGS84", "+nadgrids=..."; empty for no shift.
std::string writeDatumShift(const ShiftChoice& choice);

// For the comment above a definition; may be empty.
std::string describeShift(const ShiftChoice& choice);

}  // namespace ProjDir
