#include "tools/projdir/Survey.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <set>
#include <utility>

#include "tools/projdir/AxisOrder.h"

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

bool isFinite(const LonLat& place) { return std::isfinite(place.longitude) && std::isfinite(place.latitude); }

bool isFinite(const Coordinates& coordinates) {
    return std::all_of(coordinates.begin(), coordinates.end(), [](double value) { return std::isfinite(value); });
}

// False where the distance is not a number.
bool isSamePlace(const LonLat& left, const LonLat& right) { return distanceInMetres(left, right) <= SAME_PROJECTION; }

std::vector<OperationShare> countMostUsedFirst(const std::vector<UsedOperation>& operations,
                                               const std::vector<std::size_t>& uses) {
    std::vector<OperationShare> shares(operations.size());
    for (std::size_t i = 0; i < operations.size(); ++i) shares[i].operation = operations[i];
    for (const std::size_t use : uses) ++shares[use].points;
    shares.erase(std::remove_if(shares.begin(), shares.end(), [](const auto& share) { return share.points == 0; }),
                 shares.end());
    std::stable_sort(shares.begin(), shares.end(), [](const auto& a, const auto& b) { return a.points > b.points; });
    return shares;
}

template <typename PointList>
std::vector<std::size_t> listUses(const PointList& points) {
    std::vector<std::size_t> uses;
    uses.reserve(points.size());
    for (const auto& point : points) uses.push_back(point.operation);
    return uses;
}

}  // namespace

Survey::Survey(ProjContext& projContext, const RegistryCrs& crsEntry, const Reference& geodeticReference)
    : entry(crsEntry),
      crs(createCrs(projContext, entry.code)),
      classicText(writeClassicText(projContext, crs.get(), entry)),
      area(requireArea(entry)),
      northFirst(isNorthAxisFirst(projContext, crs.get())),
      reference(geodeticReference),
      ranking(reference.rank(area)),
      definition(projContext, classicText.write("")),
      projection(projContext, crs.get(), classicText.write(""), northFirst) {
    samplePoints();
}

// Where PROJ knows an operation in a corner of the area only, few points would tell little about it.
void Survey::samplePoints() {
    points = sample(POINTS_PER_SIDE);
    if (points.empty()) throw NotExpressible("PROJ itself brings no point of its area of use to WGS 84");
    isDense = countKnown() > 0 && countKnown() < LEAST_KNOWN_POINTS;
    if (isDense) points = sample(DENSE_POINTS_PER_SIDE);
}

std::vector<Survey::Point> Survey::sample(int perSide) const {
    std::vector<Point> sampled;
    Point point;
    for (const LonLat& start : sampleArea(area, perSide))
        if (samplePoint(start, point)) sampled.push_back(point);
    return sampled;
}

// Geocentric coordinates leave no room for a projection that differs.
bool Survey::samplePoint(const LonLat& start, Point& point) const {
    const Coordinates coordinates = projection.fromGeodetic(start);
    if (!isFinite(coordinates)) return false;
    point.place = definition.toGeodetic(toEastNorth(coordinates, northFirst));
    const LonLat registrys = entry.kind == CrsKind::GEOCENTRIC ? start : projection.toGeodetic(coordinates);
    if (!isFinite(registrys)) return false;
    if (!isSamePlace(point.place, registrys))
        throw NotExpressible("its classic definition gives other coordinates than the registry's");
    const std::optional<Reference::Move> moved = reference.move(foldLongitude(registrys), ranking);
    if (!moved) return false;
    point.wgs84 = moved->wgs84;
    point.operation = moved->operation;
    return true;
}

std::size_t Survey::countKnown() const {
    return static_cast<std::size_t>(
        std::count_if(points.begin(), points.end(), [this](const Point& point) { return isKnown(point); }));
}

bool Survey::hasUnknownPart() const { return countKnown() < points.size(); }

std::vector<OperationShare> Survey::countShares() const {
    return countMostUsedFirst(reference.operations(), listUses(points));
}

ShiftEvidence Survey::gatherEvidence() const {
    ShiftEvidence evidence;
    std::set<std::size_t> used;
    for (const Point& point : points) {
        if (!isKnown(point)) continue;
        evidence.samples.push_back(makeShiftSample(classicText.ellipsoid, point.place, point.wgs84));
        used.insert(point.operation);
    }
    evidence.coversHalf = 2 * evidence.samples.size() >= points.size();
    for (const std::size_t index : used) {
        const UsedOperation& operation = reference.operations()[index];
        if (operation.shift) evidence.used.push_back({operation.source, *operation.shift, operation.accuracy});
    }
    return evidence;
}

std::optional<UsedOperation> Survey::findCommonGrid(const Reference& withGrids) const {
    const Reference::Ranking ranked = withGrids.rank(area);
    std::set<std::size_t> chosen;
    for (const Point& point : points) chosen.insert(withGrids.choose(foldLongitude(point.place), ranked));
    if (chosen.size() != 1) return std::nullopt;
    const UsedOperation& operation = withGrids.operations()[*chosen.begin()];
    return operation.gridShift.empty() ? std::nullopt : std::optional<UsedOperation>(operation);
}

// Of a CRS that PROJ cannot project, the geodetic one is asked.
std::vector<ReferencePoint> Survey::adaptToCrs(ProjContext& installed, std::vector<ReferencePoint> found) const {
    if (projection.isRegistrys()) return found;
    const GeodeticAxes axes(installed, createGeodeticCrs(installed, crs.get()).get());
    for (ReferencePoint& point : found)
        point.crs = projection.fromGeodetic(axes.read(proj_coord(point.crs[0], point.crs[1], point.crs[2], HUGE_VAL)));
    return found;
}

// Which operation PROJ uses at a check point matters only where it may have none.
InstalledEvidence Survey::surveyInstalled(ProjContext& installed) const {
    BestOperation best(installed, projection.isRegistrys() ? entry.code : entry.geodeticCode);
    const auto surveyed =
        best.sampleWithOperations(sampleArea(area, isDense ? DENSE_POINTS_PER_SIDE : POINTS_PER_SIDE));
    const auto isUnknown = [&best](const ReferencePoint& point) { return best.used()[point.operation].isBallpark; };
    const bool mayBeUnknown = std::any_of(surveyed.begin(), surveyed.end(), isUnknown);
    const auto checked = sampleArea(area, isDense ? DENSE_CHECKS_PER_SIDE : CHECKS_PER_SIDE);
    InstalledEvidence evidence;
    evidence.shares = countMostUsedFirst(best.used(), listUses(surveyed));
    for (const ReferencePoint& point :
         adaptToCrs(installed, mayBeUnknown ? best.sampleWithOperations(checked) : best.sample(checked)))
        evidence.checkPoints.push_back({point.crs, point.wgs84, !mayBeUnknown || !isUnknown(point)});
    return evidence;
}

}  // namespace ProjDir
