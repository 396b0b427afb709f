#include "tools/projdir/BestOperation.h"

#include <cmath>

namespace ProjDir {
namespace {

bool isFinite(const PJ_COORD& point) {
    return std::isfinite(point.xyz.x) && std::isfinite(point.xyz.y) && std::isfinite(point.xyz.z);
}

// EPSG:4326 has latitude first.
PJ_COORD toCoordinates(const LonLat& place) { return proj_coord(place.latitude, place.longitude, 0, HUGE_VAL); }

LonLat fromCoordinates(const PJ_COORD& point) { return {point.xy.y, point.xy.x}; }

std::string fileNameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

// What the installed file is called, which need not be the name in the text.
std::string findGridFile(const ProjContext& context, const PJ* operation) {
    const char* path = nullptr;
    proj_coordoperation_get_grid_used(context.get(), operation, 0, nullptr, &path, nullptr, nullptr, nullptr, nullptr,
                                      nullptr);
    return fileNameOf(textOrEmpty(path));
}

UsedOperation describe(const ProjContext& context, const PJ* operation) {
    UsedOperation used = describeUsed(context, operation);
    if (!used.gridShift.empty()) used.gridShift = findGridFile(context, operation);
    return used;
}

}  // namespace

BestOperation::BestOperation(ProjContext& projContext, unsigned int code)
    : context(projContext),
      operation(
          proj_create_crs_to_crs(projContext.get(), ("EPSG:" + std::to_string(code)).c_str(), "EPSG:4326", nullptr)) {}

std::vector<ReferencePoint> BestOperation::sample(const std::vector<LonLat>& places) {
    std::vector<ReferencePoint> points;
    ReferencePoint point;
    for (const LonLat& place : places)
        if (sampleOne(place, point)) points.push_back(point);
    return points;
}

std::vector<ReferencePoint> BestOperation::sampleWithOperations(const std::vector<LonLat>& places) {
    // PROJ has a type for an operation that it need not choose, and none for a choice.
    const bool hasChoice = operation != nullptr && proj_get_type(operation.get()) == PJ_TYPE_UNKNOWN;
    std::vector<ReferencePoint> points;
    ReferencePoint point;
    for (const LonLat& place : places) {
        if (!sampleOne(place, point)) continue;
        if (hasChoice || operations.empty()) point.operation = lastUsedOperation();
        points.push_back(point);
    }
    return points;
}

bool BestOperation::sampleOne(const LonLat& place, ReferencePoint& point) {
    if (operation == nullptr) return false;
    const PJ_COORD start = proj_trans(operation.get(), PJ_INV, toCoordinates(place));
    if (!isFinite(start)) return false;
    const PJ_COORD end = proj_trans(operation.get(), PJ_FWD, start);
    if (!isFinite(end)) return false;
    point.crs = {start.xyz.x, start.xyz.y, start.xyz.z};
    point.wgs84 = fromCoordinates(end);
    return true;
}

std::size_t BestOperation::lastUsedOperation() {
    const ProjPtr<PJ> last(proj_trans_get_last_used_operation(operation.get()));
    const std::string name = last == nullptr ? "" : textOrEmpty(proj_get_name(last.get()));
    const auto [entry, isNew] = indexByName.emplace(name, operations.size());
    if (isNew) operations.push_back(last == nullptr ? UsedOperation{} : describe(context, last.get()));
    return entry->second;
}

}  // namespace ProjDir
