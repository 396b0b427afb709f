#include "tools/projdir/Reference.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "text/ParameterList.h"

namespace ProjDir {
namespace {

// PROJ tries so many operations at a place before it takes any that moves it.
constexpr std::size_t LARGEST_TRY_COUNT = 3;
constexpr char OFFSHORE[] = "- offshore";

ProjPtr<PJ_OPERATION_FACTORY_CONTEXT> makeFactory(const ProjContext& context, PROJ_GRID_AVAILABILITY_USE availability) {
    ProjPtr<PJ_OPERATION_FACTORY_CONTEXT> factory(proj_create_operation_factory_context(context.get(), nullptr));
    proj_operation_factory_context_set_grid_availability_use(context.get(), factory.get(), availability);
    proj_operation_factory_context_set_spatial_criterion(context.get(), factory.get(),
                                                         PROJ_SPATIAL_CRITERION_PARTIAL_INTERSECTION);
    return factory;
}

// In degrees: what a projection and its inverse leave of a point on the border.
constexpr double BORDER = 1e-7;

bool contains(const Area& area, const LonLat& place) {
    if (place.latitude < area.south - BORDER || place.latitude > area.north + BORDER) return false;
    const bool isEast = place.longitude >= area.west - BORDER;
    const bool isWest = place.longitude <= area.east + BORDER;
    return area.west <= area.east ? isEast && isWest : isEast || isWest;
}

bool isFinite(const PJ_COORD& point) { return std::isfinite(point.xy.x) && std::isfinite(point.xy.y); }

// PROJ's texts give a grid the name of today's distribution, whatever the file is called that is installed.
std::string readGridName(const std::string& operationText) {
    for (const auto& [key, value] : CoordinateTransformation::ParameterList(operationText))
        if (key == "grids") return value;
    return "";
}

}  // namespace

UsedOperation describeUsed(const ProjContext& context, const PJ* operation) {
    UsedOperation used;
    used.source = describeSource(context, operation);
    used.text = textOrEmpty(proj_as_proj_string(context.get(), operation, PJ_PROJ_5, nullptr));
    used.isBallpark = proj_coordoperation_has_ballpark_transformation(context.get(), operation) != 0;
    used.accuracy = readAccuracy(context, operation);
    used.shift = findShift(context, operation, used.text);
    if (isGridShift(used.text)) used.gridShift = readGridName(used.text);
    return used;
}

Reference::Reference(const ProjContext& projContext, const PJ* geodeticCrs, PROJ_GRID_AVAILABILITY_USE availability)
    : context(projContext), axes(projContext, geodeticCrs) {
    const ProjPtr<PJ> wgs84(proj_create(context.get(), "EPSG:4326"));
    const ProjPtr<PJ_OPERATION_FACTORY_CONTEXT> factory = makeFactory(context, availability);
    const ProjPtr<PJ_OBJ_LIST> list(proj_create_operations(context.get(), geodeticCrs, wgs84.get(), factory.get()));
    const int count = list == nullptr ? 0 : proj_list_get_count(list.get());
    for (int i = 0; i < count; ++i) {
        ProjPtr<PJ> operation(proj_list_get(context.get(), list.get(), i));
        if (operation == nullptr) continue;
        descriptions.push_back(describeUsed(context, operation.get()));
        const std::optional<Helmert>& shift = descriptions.back().shift;
        candidates.push_back(makeCandidate(std::move(operation)));
        candidates.back().isNull = shift && shift->isNull();
    }
    UsedOperation none;
    none.source = "no operation";
    none.isBallpark = true;
    descriptions.push_back(none);
}

Reference::Candidate Reference::makeCandidate(ProjPtr<PJ> operation) const {
    Candidate candidate;
    const char* name = nullptr;
    proj_get_area_of_use(context.get(), operation.get(), nullptr, nullptr, nullptr, nullptr, &name);
    candidate.area = readAreaOfUse(context, operation.get());
    candidate.accuracy = proj_coordoperation_get_accuracy(context.get(), operation.get());
    candidate.isOffshore = textOrEmpty(name).find(OFFSHORE) != std::string::npos;
    candidate.name = textOrEmpty(proj_get_name(operation.get()));
    if (proj_get_type(operation.get()) == PJ_TYPE_CONCATENATED_OPERATION)
        candidate.stepCount = proj_concatoperation_get_step_count(context.get(), operation.get());
    candidate.operation = std::move(operation);
    return candidate;
}

// The accuracy that the registry states decides, as it does for PROJ; among equals the first.
bool Reference::isPreferred(const Candidate& candidate, const Candidate& best) const {
    return candidate.accuracy >= 0 && !candidate.isOffshore && candidate.accuracy < best.accuracy;
}

// PROJ's order: what has an accuracy, then what covers more of the area, then what is more accurate, moves nothing, is
// simpler, shorter in name, and last by name, so that "(4)" comes before "(3)".
bool Reference::comesFirst(std::size_t left, std::size_t right, const Area& area) const {
    const Candidate& a = candidates[left];
    const Candidate& b = candidates[right];
    if ((a.accuracy < 0) != (b.accuracy < 0)) return b.accuracy < 0;
    const double extentA = commonExtent(a.area, area);
    const double extentB = commonExtent(b.area, area);
    if (extentA != extentB) return extentA > extentB;
    if (a.accuracy != b.accuracy) return a.accuracy < b.accuracy;
    if (a.isNull != b.isNull) return a.isNull;
    if (a.stepCount != b.stepCount) return a.stepCount < b.stepCount;
    return a.name.size() != b.name.size() ? a.name.size() < b.name.size() : a.name > b.name;
}

Reference::Ranking Reference::rank(const Area& area) const {
    Ranking ranking;
    for (std::size_t i = 0; i < candidates.size(); ++i)
        if (overlap(candidates[i].area, area)) ranking.push_back(i);
    std::stable_sort(ranking.begin(), ranking.end(),
                     [&](std::size_t left, std::size_t right) { return comesFirst(left, right, area); });
    return ranking;
}

std::optional<std::size_t> Reference::choose(const LonLat& place, const Ranking& ranking,
                                             const std::vector<std::size_t>& excluded) const {
    std::optional<std::size_t> best;
    for (const std::size_t i : ranking) {
        if (!contains(candidates[i].area, place)) continue;
        if (std::find(excluded.begin(), excluded.end(), i) != excluded.end()) continue;
        if (!best || isPreferred(candidates[i], candidates[*best])) best = i;
    }
    return best;
}

std::size_t Reference::choose(const LonLat& place, const Ranking& ranking) const {
    return choose(place, ranking, {}).value_or(candidates.size());
}

std::optional<Reference::Move> Reference::moveBy(std::size_t index, const LonLat& place) const {
    const PJ_COORD moved = proj_trans(candidates[index].operation.get(), PJ_FWD, axes.write(place));
    if (!isFinite(moved)) return std::nullopt;
    // EPSG:4326 has latitude first.
    return Move{{moved.xy.y, moved.xy.x}, index};
}

std::optional<Reference::Move> Reference::move(const LonLat& place, const Ranking& ranking) const {
    std::vector<std::size_t> failed;
    while (failed.size() < LARGEST_TRY_COUNT) {
        const std::optional<std::size_t> best = choose(place, ranking, failed);
        if (!best) break;
        if (auto moved = moveBy(*best, place)) return moved;
        failed.push_back(*best);
    }
    if (candidates.empty()) return std::nullopt;
    return Move{place, candidates.size()};
}

}  // namespace ProjDir
