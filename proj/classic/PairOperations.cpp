#include "proj/classic/PairOperations.h"

#include <cmath>
#include <functional>
#include <utility>

#include "proj/classic/PairStages.h"

namespace ClassicProj {

namespace {

// A difference is 0 for finite numbers alone; one comparison serves all three.
bool areFinite(double x, double y, double z) { return (x - x) + (y - y) + (z - z) == 0; }

PJ_COORD makePoint(double x, double y, double z) {
    PJ_COORD point;
    point.xyzt = {x, y, z, HUGE_VAL};
    return point;
}

// A grid lies on one turn of longitudes, and PROJ folds what it shifts by one; the classic interface does not.
PJ_COORD shiftByGrid(PJ* grid, PJ_DIRECTION direction, PJ_COORD point) {
    constexpr double FULL_TURN = 6.283185307179586;
    const double longitude = point.xyz.x;
    point.xyz.x = std::remainder(longitude, FULL_TURN);
    PJ_COORD moved = proj_trans(grid, direction, point);
    const double turns = std::round((longitude - moved.xyz.x) / FULL_TURN);
    if (turns != 0) moved.xyz.x += turns * FULL_TURN;
    return moved;
}

// Why `projection` gave no finite result, and makes it forget.
int takeError(PJ* projection) {
    const int error = proj_errno(projection);
    proj_errno_reset(projection);
    return error != 0 ? error : PROJ_ERR_COORD_TRANSFM;
}

}  // namespace

int PairOperation::transform(double& x, double& y, double* z) const {
    double movedX = x;
    double movedY = y;
    double movedZ = z == nullptr ? 0.0 : *z;
    if (!areFinite(movedX, movedY, movedZ)) return PROJ_ERR_COORD_TRANSFM_INVALID_COORD;
    for (const Stage& stage : stages) {
        const PJ_COORD point = makePoint(movedX, movedY, movedZ);
        const PJ_COORD moved = stage.isGridShift ? shiftByGrid(stage.projection, stage.direction, point)
                                                 : proj_trans(stage.projection, stage.direction, point);
        movedX = moved.xyz.x;
        movedY = moved.xyz.y;
        movedZ = moved.xyz.z;
        if (!areFinite(movedX, movedY, movedZ)) return takeError(stage.projection);
    }
    x = movedX;
    y = movedY;
    if (z != nullptr) *z = movedZ;
    return 0;
}

PairOperations::PairOperations(PJ_CONTEXT* projContext, std::size_t mostPairs)
    : context(projContext), bound(mostPairs) {}

// Definitions are never far apart in memory, so the low bits of the target are spread before they are mixed in.
std::size_t PairOperations::KeyHash::operator()(const Key& key) const {
    constexpr std::size_t SPREAD = 0x9E3779B97F4A7C15U;
    const std::hash<const Definition*> hash;
    return (hash(key.source) * SPREAD) ^ hash(key.target) ^ static_cast<std::size_t>(key.withGeoids);
}

const PairOperation* PairOperations::findOrMake(const Key& key, int& error) {
    const auto found = index.find(key);
    if (found == index.end()) return make(key, error);
    entries.splice(entries.begin(), entries, found->second);
    return &entries.front().operation;
}

const PairOperation* PairOperations::make(const Key& key, int& error) {
    Entries made(1);
    made.front().key = key;
    if (!addStages(key, made.front().operation)) {
        error = proj_context_errno(context);
        if (error == 0) error = PROJ_ERR_INVALID_OP;
        return nullptr;
    }
    if (entries.size() >= bound) {
        index.erase(entries.back().key);
        entries.pop_back();
    }
    entries.splice(entries.begin(), made);
    index[key] = entries.begin();
    return &entries.front().operation;
}

bool PairOperations::addStages(const Key& key, PairOperation& operation) {
    for (const StageText& stage : writeStages(*key.source, *key.target, key.withGeoids)) {
        PJ* const projection = stage.isGridShift ? sharedGridShift(stage.text) : ownProjection(stage.text, operation);
        if (projection == nullptr) return false;
        operation.stages.push_back({projection, stage.backwards ? PJ_INV : PJ_FWD, stage.isGridShift});
    }
    return true;
}

PJ* PairOperations::ownProjection(const std::string& text, PairOperation& operation) {
    ProjectionPtr projection(proj_create(context, text.c_str()));
    if (projection == nullptr) return nullptr;
    operation.owned.push_back(std::move(projection));
    return operation.owned.back().get();
}

PJ* PairOperations::sharedGridShift(const std::string& text) {
    const auto known = gridShifts.find(text);
    if (known != gridShifts.end()) return known->second.get();
    ProjectionPtr projection(proj_create(context, text.c_str()));
    if (projection == nullptr) return nullptr;
    return gridShifts.emplace(text, std::move(projection)).first->second.get();
}

}  // namespace ClassicProj
