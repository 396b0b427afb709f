#include "proj/classic/PairOperations.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <new>
#include <string_view>
#include <utility>

#include "text/NumericText.h"

namespace ClassicProj {
namespace {

using CoordinateTransformation::writeDouble;

// The text of a PROJ operation and its direction. Grid shifts are separate stages, so that all pairs can share the open
// grids.
struct StageText {
    std::string text;
    bool backwards;
    bool isGridShift;
};

struct Step {
    std::string text;
    bool backwards;
};

// Collects steps and groups them into stages.
class StageWriter {
public:
    void add(const std::string& step, bool backwards) {
        if (!step.empty()) steps.push_back({step, backwards});
    }

    void addGridShift(const std::string& step, bool backwards) {
        closeStage();
        stages.push_back({step, backwards, true});
    }

    std::vector<StageText> finish() {
        closeStage();
        return std::move(stages);
    }

private:
    // A single step needs no pipeline around it.
    void closeStage() {
        if (steps.size() == 1) stages.push_back({steps.front().text, steps.front().backwards, false});
        if (steps.size() > 1) stages.push_back({pipeline(), false, false});
        steps.clear();
    }

    std::string pipeline() const {
        std::string text = "+proj=pipeline";
        for (const Step& step : steps) text += (step.backwards ? " +step +inv " : " +step ") + step.text;
        return text;
    }

    std::vector<Step> steps;
    std::vector<StageText> stages;
};

// Semi-axes instead of a name: given names, PROJ treats the ellipsoids of WGS 84 and GRS 80 as one, and the classic
// interface does not.
std::string cartesianStep(const Ellipsoid& ellipsoid) {
    return "+proj=cart +a=" + writeDouble(ellipsoid.semiMajor) + " +b=" + writeDouble(ellipsoid.semiMinor);
}

// The linear form, in which rotations count as small angles, as PROJ has always done here.
std::string helmertStep(const std::array<double, 7>& toWgs84) {
    constexpr const char* KEYS[] = {" +x=", " +y=", " +z=", " +rx=", " +ry=", " +rz=", " +s="};
    const bool translatesOnly = std::all_of(toWgs84.begin() + 3, toWgs84.end(), [](double v) { return v == 0; });
    std::string step = translatesOnly ? "+proj=helmert" : "+proj=helmert +convention=position_vector";
    for (std::size_t i = 0; i < (translatesOnly ? 3 : 7); ++i) step += KEYS[i] + writeDouble(toWgs84[i]);
    return step;
}

// PROJ's name for a grid without any shift.
bool isNullGrid(std::string_view grids) {
    while (!grids.empty()) {
        const std::string_view name = grids.substr(0, grids.find(','));
        if (name != "null" && name != "@null") return false;
        grids.remove_prefix(std::min(name.size() + 1, grids.size()));
    }
    return true;
}

void addGrids(StageWriter& stages, const Datum& datum, bool backwards) {
    if (datum.kind == DatumKind::GRIDS && !isNullGrid(datum.grids))
        stages.addGridShift("+proj=hgridshift +grids=" + datum.grids, backwards);
}

void addGeocentricShift(StageWriter& stages, const Datum& source, const Datum& target) {
    const bool byHelmert = source.kind == DatumKind::HELMERT || target.kind == DatumKind::HELMERT;
    if (!byHelmert && source.meetingEllipsoid == target.meetingEllipsoid) return;
    stages.add(cartesianStep(source.meetingEllipsoid), false);
    if (source.kind == DatumKind::HELMERT) stages.add(helmertStep(source.toWgs84), false);
    if (target.kind == DatumKind::HELMERT) stages.add(helmertStep(target.toWgs84), true);
    stages.add(cartesianStep(target.meetingEllipsoid), true);
}

void addDatumShift(StageWriter& stages, const Datum& source, const Datum& target) {
    if (needsNoShift(source, target)) return;
    addGrids(stages, source, false);
    addGeocentricShift(stages, source, target);
    addGrids(stages, target, true);
}

// The forward direction is from heights above the ellipsoid to heights above the geoid.
void addGeoid(StageWriter& stages, const Definition& definition, bool backwards) {
    if (!definition.geoidGrids.empty())
        stages.addGridShift("+proj=vgridshift +grids=" + definition.geoidGrids, backwards);
}

// The stages from one CRS to another, in the classic order: source to geodetic coordinates, geoid, datum, geoid,
// target. Empty when nothing changes. Geoids apply only to points with heights.
std::vector<StageText> writeStages(const Definition& source, const Definition& target, bool withHeights) {
    StageWriter stages;
    stages.add(source.step, true);
    if (withHeights) addGeoid(stages, source, true);
    addDatumShift(stages, source.datum, target.datum);
    if (withHeights) addGeoid(stages, target, false);
    stages.add(target.step, false);
    return stages.finish();
}

// The difference x - x is 0 only for a finite number, so one comparison covers all three.
bool areFinite(double x, double y, double z) { return (x - x) + (y - y) + (z - z) == 0; }

PJ_COORD makePoint(double x, double y, double z) {
    PJ_COORD point;
    point.xyzt = {x, y, z, HUGE_VAL};
    return point;
}

// A grid covers one turn of longitudes, and PROJ wraps the longitudes that it shifts. The classic interface does not.
PJ_COORD shiftByGrid(PJ* grid, PJ_DIRECTION direction, PJ_COORD point) {
    constexpr double FULL_TURN = 6.283185307179586;
    const double longitude = point.xyz.x;
    point.xyz.x = std::remainder(longitude, FULL_TURN);
    PJ_COORD moved = proj_trans(grid, direction, point);
    const double turns = std::round((longitude - moved.xyz.x) / FULL_TURN);
    if (turns != 0) moved.xyz.x += turns * FULL_TURN;
    return moved;
}

// The time for which a failed pair is not tried again, and the maximum number of failed pairs on record.
constexpr std::chrono::seconds RETRY_DELAY{1};
constexpr std::size_t MOST_FAILURES = 1024;

}  // namespace

inline PJ_COORD PairOperation::Stage::moveIn(PJ_DIRECTION wanted, const PJ_COORD& point) const {
    return isGridShift ? shiftByGrid(projection, wanted, point) : proj_trans(projection, wanted, point);
}

inline PJ_COORD PairOperation::Stage::move(const PJ_COORD& point) const { return moveIn(direction, point); }

inline void PairOperation::Stage::moveInPlace(PJ_DIRECTION wanted, Position& point) const {
    static_assert(sizeof(Position) == sizeof(PJ_COORD), "PROJ has four ordinates");
    PJ_COORD coordinate;
    std::memcpy(&coordinate, &point, sizeof(Position));
    const PJ_COORD moved = moveIn(wanted, coordinate);
    // PROJ has just written them one by one; reading two at once would wait for both writes.
    point.x = moved.xyz.x;
    point.y = moved.xyz.y;
    point.z = moved.xyz.z;
}

int PairOperation::transform(double& x, double& y, double* z) const {
    double movedX = x;
    double movedY = y;
    double movedZ = z == nullptr ? 0.0 : *z;
    if (!areFinite(movedX, movedY, movedZ)) return PROJ_ERR_COORD_TRANSFM_INVALID_COORD;
    for (const Stage& stage : stages) {
        const PJ_COORD moved = stage.move(makePoint(movedX, movedY, movedZ));
        movedX = moved.xyz.x;
        movedY = moved.xyz.y;
        movedZ = moved.xyz.z;
        if (!areFinite(movedX, movedY, movedZ)) return findError(makePoint(x, y, z == nullptr ? 0.0 : *z));
    }
    x = movedX;
    y = movedY;
    if (z != nullptr) *z = movedZ;
    return 0;
}

void PairOperation::move(Position* points, std::size_t count) const {
    for (const Stage& stage : stages)
        for (Position* point = points; point != points + count; ++point)
            if (point->isFinite()) stage.moveInPlace(stage.direction, *point);
    forgetErrors();
}

void PairOperation::moveBack(Position& point) const {
    for (auto stage = stages.rbegin(); stage != stages.rend() && point.isFinite(); ++stage)
        stage->moveInPlace(stage->direction == PJ_FWD ? PJ_INV : PJ_FWD, point);
    forgetErrors();
}

// All projections of a context share the error number. An old one must not look like that of a later failure.
void PairOperation::forgetErrors() const {
    if (!stages.empty()) proj_errno_reset(stages.front().projection);
}

// Repeats the stages to find the error. PROJ's current number may be an older one: some points fail without setting it,
// and all projections of a context share it.
int PairOperation::findError(PJ_COORD point) const {
    int error = 0;
    for (const Stage& stage : stages) {
        proj_errno_reset(stage.projection);
        point = stage.move(makePoint(point.xyz.x, point.xyz.y, point.xyz.z));
        error = proj_errno(stage.projection);
        proj_errno_reset(stage.projection);
        if (!areFinite(point.xyz.x, point.xyz.y, point.xyz.z)) break;
    }
    return error != 0 ? error : PROJ_ERR_COORD_TRANSFM;
}

PairOperations::PairOperations(MakeContext contextMaker, std::size_t mostPairs, Now currentTime)
    : makeContext(contextMaker), now(currentTime), operations(mostPairs) {}

// Definitions are close together in memory, so one hash is spread before the two are mixed.
std::size_t PairOperations::KeyHash::operator()(const Key& key) const {
    constexpr std::size_t SPREAD = 0x9E3779B97F4A7C15U;
    const std::hash<const Definition*> hash;
    return (hash(key.source) * SPREAD) ^ hash(key.target) ^ static_cast<std::size_t>(key.withGeoids);
}

const PairOperation* PairOperations::findOrMake(const Key& key, int& error) {
    const PairOperation* const known = operations.find(key);
    return known != nullptr ? known : tryToMake(key, error);
}

void PairOperations::clear() {
    operations.clear();
    failures.clear();
    gridShifts.clear();
}

const PairOperation* PairOperations::tryToMake(const Key& key, int& error) {
    const ProjWork work;
    error = work.isAllowed() ? recentFailure(key) : PROJ_ERR_OTHER;
    if (error != 0) return nullptr;
    const PairOperation* const made = make(key, error);
    if (made == nullptr) rememberFailure(key, error);
    return made;
}

const PairOperation* PairOperations::make(const Key& key, int& error) {
    PairOperation operation;
    if (addStagesOrChangeContext(key, operation)) return operations.insert(key, std::move(operation));
    error = proj_context_errno(context);
    if (error == 0) error = PROJ_ERR_INVALID_OP;
    return nullptr;
}

// After memory has run out, existing operations continue in the old context; new ones get another.
bool PairOperations::addStagesOrChangeContext(const Key& key, PairOperation& operation) {
    try {
        if (context == nullptr) context = makeContext();
        return addStages(key, operation);
    } catch (const std::bad_alloc&) {
        context = nullptr;
        throw;
    }
}

int PairOperations::recentFailure(const Key& key) {
    const auto found = failures.find(key);
    if (found == failures.end()) return 0;
    if (now() - found->second.when < RETRY_DELAY) return found->second.error;
    failures.erase(found);
    return 0;
}

void PairOperations::rememberFailure(const Key& key, int error) {
    if (failures.size() >= MOST_FAILURES) failures.clear();
    failures[key] = {error, now()};
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
    ProjectionPtr projection = makeProjection(context, text);
    if (projection == nullptr) return nullptr;
    operation.owned.push_back(std::move(projection));
    return operation.owned.back().get();
}

PJ* PairOperations::sharedGridShift(const std::string& text) {
    const auto known = gridShifts.find(text);
    if (known != gridShifts.end()) return known->second.get();
    ProjectionPtr projection = makeGridShift(context, text);
    if (projection == nullptr) return nullptr;
    return gridShifts.emplace(text, std::move(projection)).first->second.get();
}

}  // namespace ClassicProj
