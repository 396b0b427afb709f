#include "tools/projdir/Survey.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "tools/projdir/AxisOrder.h"
#include "tools/projdir/RegistryProjection.h"

namespace ProjDir {
namespace {

constexpr int POINTS_PER_SIDE = 9;
constexpr int DENSE_POINTS_PER_SIDE = 25;
// Between the points that the shift is chosen at, not on them.
constexpr int CHECKS_PER_SIDE = 8;
constexpr int DENSE_CHECKS_PER_SIDE = 26;
constexpr std::size_t LEAST_KNOWN_POINTS = 9;
// In metres on the ground.
constexpr double SAME_PROJECTION = 0.001;

Area requireArea(const RegistryCrs& entry) {
    if (!entry.area) throw NotExpressible("it has no area of use");
    return *entry.area;
}

Coordinates toEastNorth(Coordinates coordinates, bool isNorthFirst) {
    if (isNorthFirst) std::swap(coordinates[0], coordinates[1]);
    return coordinates;
}

// False where the distance is not a number.
bool isSamePlace(const LonLat& left, const LonLat& right) { return distanceInMetres(left, right) <= SAME_PROJECTION; }

}  // namespace

Survey::Survey(ProjContext& projContext, const RegistryCrs& entry)
    : registryCrs(createCrs(projContext, entry.code)),
      classicText(writeClassicText(projContext, crs(), entry)),
      area(requireArea(entry)),
      northFirst(isNorthAxisFirst(projContext, crs())),
      best(projContext, entry.code) {
    samplePoints();
    invertPoints(projContext);
}

// Where PROJ knows an operation in a corner of the area only, few points would tell little about it.
void Survey::samplePoints() {
    points = best.sampleWithOperations(sampleArea(area, POINTS_PER_SIDE));
    if (points.empty()) throw NotExpressible("PROJ itself brings no point of its area of use to WGS 84");
    isDense = countKnown() > 0 && countKnown() < LEAST_KNOWN_POINTS;
    if (isDense) points = best.sampleWithOperations(sampleArea(area, DENSE_POINTS_PER_SIDE));
}

// Geocentric coordinates leave no room for a projection that differs.
void Survey::invertPoints(ProjContext& context) {
    const ClassicInverse inverse(context, classicText.write(""));
    const RegistryProjection projection(context, crs());
    const bool isGeocentric = proj_get_type(crs()) == PJ_TYPE_GEOCENTRIC_CRS;
    for (const ReferencePoint& point : points) {
        places.push_back(inverse(toEastNorth(point.crs, northFirst)));
        if (!isGeocentric && !isSamePlace(places.back(), projection.toGeodetic(point.crs)))
            throw NotExpressible("its classic definition gives other coordinates than the registry's");
    }
}

std::size_t Survey::countKnown() const {
    return static_cast<std::size_t>(
        std::count_if(points.begin(), points.end(), [this](const ReferencePoint& point) { return isKnown(point); }));
}

bool Survey::hasUnknownPart() const { return countKnown() < points.size(); }

std::vector<OperationShare> Survey::countShares() const {
    std::vector<OperationShare> shares;
    for (const UsedOperation& operation : best.used()) shares.push_back({operation, 0});
    for (const ReferencePoint& point : points) ++shares[point.operation].points;
    std::vector<OperationShare> mostUsedFirst;
    for (const OperationShare& share : shares)
        mostUsedFirst.insert(std::upper_bound(mostUsedFirst.begin(), mostUsedFirst.end(), share,
                                              [](const auto& a, const auto& b) { return a.points > b.points; }),
                             share);
    return mostUsedFirst;
}

ShiftEvidence Survey::gatherEvidence() const {
    ShiftEvidence evidence;
    for (std::size_t i = 0; i < points.size(); ++i)
        if (isKnown(points[i]))
            evidence.samples.push_back(makeShiftSample(classicText.ellipsoid, places[i], points[i].wgs84));
    evidence.coversHalf = 2 * evidence.samples.size() >= points.size();
    for (const UsedOperation& operation : best.used()) {
        const std::optional<Helmert> helmert = readShift(operation.text);
        if (helmert && !operation.isBallpark) evidence.used.push_back({operation.source, *helmert});
    }
    return evidence;
}

std::string Survey::findCommonGrid() const {
    const std::vector<OperationShare> shares = countShares();
    return shares.front().points == points.size() ? shares.front().operation.gridShift : "";
}

// Which operation PROJ uses at a point matters only where it may have none.
std::vector<CheckPoint> Survey::makeCheckPoints() {
    const auto checked = sampleArea(area, isDense ? DENSE_CHECKS_PER_SIDE : CHECKS_PER_SIDE);
    const bool mayBeUnknown = hasUnknownPart();
    std::vector<CheckPoint> checks;
    for (const ReferencePoint& point : mayBeUnknown ? best.sampleWithOperations(checked) : best.sample(checked))
        checks.push_back({point.crs, point.wgs84, !mayBeUnknown || isKnown(point)});
    return checks;
}

}  // namespace ProjDir
