#include "tools/projdir/Definition.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <exception>
#include <future>
#include <map>
#include <set>
#include <utility>

#include "QSHelpers/NumericText.h"

namespace ProjDir {
namespace {

constexpr int POINTS_PER_SIDE = 9;
constexpr int DENSE_POINTS_PER_SIDE = 25;
// These give points between those for which the shift is chosen.
constexpr int CHECKS_PER_SIDE = 8;
constexpr int DENSE_CHECKS_PER_SIDE = 26;
constexpr std::size_t LEAST_KNOWN_POINTS = 9;
// In metres.
constexpr double SAME_PROJECTION = 0.001;
// One part in so many of the points may be far off.
constexpr std::size_t LARGEST_FAR_PART = 10;

Area requireArea(const RegistryCrs& entry) {
    if (!entry.area) throw NotExpressible("it has no area of use");
    return *entry.area;
}

template <typename PointList>
std::vector<OperationShare> countShares(const std::vector<Operation>& operations, const PointList& points) {
    std::vector<OperationShare> shares;
    shares.reserve(operations.size());
    for (const Operation& operation : operations) shares.push_back({operation, 0});
    for (const auto& point : points) ++shares[point.operation].points;
    shares.erase(std::remove_if(shares.begin(), shares.end(), [](const auto& share) { return share.points == 0; }),
                 shares.end());
    std::stable_sort(shares.begin(), shares.end(), [](const auto& a, const auto& b) { return a.points > b.points; });
    return shares;
}

void requireCloseShift(const ShiftChoice& shift, std::size_t farPoints, std::size_t points, double worst) {
    if (LARGEST_FAR_PART * farPoints <= points) return;
    const std::string name = shift.kind == ShiftKind::FITTED      ? "fitted"
                             : shift.kind == ShiftKind::PUBLISHED ? shift.source
                                                                  : "none";
    throw NotExpressible("its best shift (" + name + ") is farther than " +
                         QSHelpers::convertNumericToText(worst, -1, false) + " m from PROJ's operations at " +
                         std::to_string(farPoints) + " of " + std::to_string(points) + " points; --worst allows it");
}

// The largest groups come first, so that no thread ends with one of them while the others are idle.
std::vector<std::vector<std::size_t>> groupByGeodeticCrs(const std::vector<RegistryCrs>& list) {
    std::map<unsigned int, std::vector<std::size_t>> byCode;
    for (std::size_t i = 0; i < list.size(); ++i) byCode[list[i].geodeticCode].push_back(i);
    std::vector<std::vector<std::size_t>> groups;
    groups.reserve(byCode.size());
    for (auto& [code, group] : byCode) groups.push_back(std::move(group));
    std::stable_sort(groups.begin(), groups.end(), [](const auto& a, const auto& b) { return a.size() > b.size(); });
    return groups;
}

}  // namespace

// Points over the area of use of one CRS, which is not compound, with their places on WGS 84 by the reference.
class DefinitionMaker::Survey {
public:
    // NotExpressible for a CRS without a classic definition or an area of use, for one of whose points PROJ transforms
    // none, and for one whose definition is another projection than the registry's. RegistryError when PROJ cannot make
    // the CRS.
    Survey(ProjContext& projContext, const RegistryCrs& crsEntry, const Reference& geodeticReference)
        : entry(crsEntry),
          crs(createCrs(projContext, entry.code)),
          text(writeClassicText(projContext, crs.get(), entry)),
          area(requireArea(entry)),
          northFirst(isNorthAxisFirst(projContext, crs.get())),
          reference(geodeticReference),
          ranking(reference.rank(area)),
          definition(projContext, text.write("")),
          projection(projContext, crs.get(), text.write(""), northFirst),
          points(sample(POINTS_PER_SIDE)),
          known(countKnown()) {
        if (points.empty()) throw NotExpressible("PROJ itself transforms no point of its area of use to WGS 84");
        // Where PROJ knows an operation only in a corner of the area, few points are not representative.
        isDense = known > 0 && known < LEAST_KNOWN_POINTS;
        if (!isDense) return;
        points = sample(DENSE_POINTS_PER_SIDE);
        known = countKnown();
    }

    const ClassicText& classicText() const { return text; }
    bool isNorthFirst() const { return northFirst; }
    bool hasUnknownPart() const { return known < points.size(); }
    std::vector<OperationShare> listShares() const { return countShares(reference.operations(), points); }

    ShiftEvidence gatherEvidence() const {
        ShiftEvidence evidence;
        std::set<std::size_t> used;
        for (const Point& point : points) {
            if (!isKnown(point)) continue;
            evidence.samples.push_back(makeShiftSample(text.ellipsoid, point.place, point.wgs84));
            used.insert(point.operation);
        }
        evidence.coversHalf = 2 * known >= points.size();
        for (const std::size_t index : used) {
            const Operation& operation = reference.operations()[index];
            if (operation.shift) evidence.used.push_back(operation);
        }
        return evidence;
    }

    // The grid shift that PROJ, with all grids, chooses at every point; null if there is none.
    const Operation* findCommonGrid(const Reference& withGrids) const {
        const Reference::Ranking ranked = withGrids.rank(area);
        std::set<std::size_t> chosen;
        for (const Point& point : points) chosen.insert(withGrids.choose(foldLongitude(point.place), ranked));
        const Operation& operation = withGrids.operations()[*chosen.begin()];
        return chosen.size() == 1 && !operation.gridShift.empty() ? &operation : nullptr;
    }

    // Sets the shares and check points by PROJ's best operations with the installed grids. The operation at a check
    // point only matters where PROJ may know none.
    void surveyInstalled(ProjContext& withGrids, CrsOutcome& outcome) const {
        BestOperation best(withGrids, projection.isRegistrys() ? entry.code : entry.geodeticCode);
        const auto surveyed = best.sample(sampleArea(area, isDense ? DENSE_POINTS_PER_SIDE : POINTS_PER_SIDE), true);
        const auto isUnknown = [&best](const ReferencePoint& point) { return best.used()[point.operation].isBallpark; };
        const bool mayBeUnknown = std::any_of(surveyed.begin(), surveyed.end(), isUnknown);
        const auto checked = sampleArea(area, isDense ? DENSE_CHECKS_PER_SIDE : CHECKS_PER_SIDE);
        outcome.shares = countShares(best.used(), surveyed);
        for (const ReferencePoint& point : adaptToCrs(withGrids, best.sample(checked, mayBeUnknown)))
            outcome.checkPoints.push_back({point.crs, point.wgs84, !mayBeUnknown || !isUnknown(point)});
    }

private:
    using Point = Reference::Move;

    bool isKnown(const Point& point) const { return !reference.operations()[point.operation].isBallpark; }

    std::size_t countKnown() const {
        return static_cast<std::size_t>(
            std::count_if(points.begin(), points.end(), [this](const Point& point) { return isKnown(point); }));
    }

    std::vector<Point> sample(int perSide) const {
        std::vector<Point> sampled;
        for (const LonLat& start : sampleArea(area, perSide))
            if (const auto point = samplePoint(start)) sampled.push_back(*point);
        return sampled;
    }

    // The definition must agree with the registry's projection. Geocentric coordinates have no projection.
    std::optional<Point> samplePoint(const LonLat& start) const {
        Coordinates coordinates = projection.fromGeodetic(start);
        if (!isFinite(coordinates)) return std::nullopt;
        const LonLat registrys = entry.kind == CrsKind::GEOCENTRIC ? start : projection.toGeodetic(coordinates);
        if (northFirst) std::swap(coordinates[0], coordinates[1]);
        const LonLat place = definition.toGeodetic(coordinates);
        if (!isFinite(registrys)) return std::nullopt;
        // A distance that is not a number is not the same place.
        if (!(distanceInMetres(place, registrys) <= SAME_PROJECTION))
            throw NotExpressible("its classic definition gives other coordinates than the registry's");
        std::optional<Point> moved = reference.move(foldLongitude(registrys), ranking);
        if (moved) moved->place = place;
        return moved;
    }

    // For a CRS that PROJ cannot project, the points are those of its geodetic CRS.
    std::vector<ReferencePoint> adaptToCrs(ProjContext& withGrids, std::vector<ReferencePoint> found) const {
        if (projection.isRegistrys()) return found;
        const GeodeticAxes axes(withGrids, createGeodeticCrs(withGrids, crs.get()).get());
        for (ReferencePoint& point : found) point.crs = projection.fromGeodetic(axes.read(point.crs));
        return found;
    }

    const RegistryCrs& entry;
    ProjPtr<PJ> crs;
    ClassicText text;
    Area area;
    bool northFirst;
    const Reference& reference;
    Reference::Ranking ranking;
    ClassicProjection definition;
    RegistryProjection projection;
    std::vector<Point> points;
    std::size_t known;
    bool isDense = false;
};

DefinitionMaker::DefinitionMaker(const DefinitionOptions& definitionOptions)
    : options(definitionOptions), context(GridUse::NONE) {
    context.openDatabaseUnshared();
    if (!options.verify) return;
    installed.emplace();
    installed->openDatabaseUnshared();
}

// The definition of a compound CRS is that of its horizontal part: heights are not transformed.
CrsOutcome DefinitionMaker::make(const RegistryCrs& crs) {
    CrsOutcome outcome;
    outcome.crs = crs;
    describe(crs, outcome);
    const RegistryCrs& part = crs.horizontalPart();
    try {
        define(part, outcome);
    } catch (const NotExpressible& reason) {
        if (crs.horizontal != nullptr)
            outcome.omission = "its horizontal part EPSG:" + std::to_string(part.code) + " is left out: ";
        outcome.omission += reason.what();
    }
    requireSoundDatabase(context, nameOfCode(crs.code));
    if (installed) requireSoundDatabase(*installed, nameOfCode(crs.code));
    return outcome;
}

void DefinitionMaker::describe(const RegistryCrs& crs, CrsOutcome& outcome) const {
    if (crs.isDeprecated) outcome.replacedBy = findReplacements(context, createCrs(context, crs.code).get());
    const RegistryCrs& part = crs.horizontalPart();
    if (!isHorizontal(part.kind)) return;
    const Axis axis = readAxis(context, createCrs(context, part.code).get());
    outcome.unit = axis.unit;
    outcome.unitLength = axis.unitLength;
}

void DefinitionMaker::define(const RegistryCrs& crs, CrsOutcome& outcome) {
    requireExpressibleKind(crs.kind);
    Base& geodetic = baseOf(crs);
    const Survey survey(context, crs, geodetic.reference);
    const ShiftEvidence evidence = survey.gatherEvidence();
    ClassicDefinition definition;
    definition.isNorthFirst = survey.isNorthFirst();
    definition.shift = chooseShiftOf(survey, geodetic, evidence);
    definition.hasUnknownPart = survey.hasUnknownPart();
    const bool isGrid = definition.shift.kind == ShiftKind::GRID;
    if (!isGrid) definition.farPoints = countBeyond(definition.shift.helmert, evidence.samples, options.worst);
    requireCloseShift(definition.shift, definition.farPoints, evidence.samples.size(), options.worst);
    definition.text = survey.classicText().write(writeDatumShift(definition.shift));
    // Names of the database are part of the text.
    if (!isWholeDefinition(definition.text))
        throw NotExpressible("its definition has a character that ends a definition");
    if (!evidence.samples.empty() && !isGrid) outcome.largestDistance = definition.shift.residual.largest;
    if (installed)
        survey.surveyInstalled(*installed, outcome);
    else
        outcome.shares = survey.listShares();
    outcome.definition = std::move(definition);
}

DefinitionMaker::Base& DefinitionMaker::baseOf(const RegistryCrs& crs) {
    if (base != nullptr && base->code == crs.geodeticCode) return *base;
    base.reset();
    ProjPtr<PJ> geodeticCrs = createCrs(context, crs.geodeticCode);
    Reference reference(context, geodeticCrs.get(), PROJ_GRID_AVAILABILITY_DISCARD_OPERATION_IF_MISSING_GRID);
    std::optional<Reference> withGrids;
    if (options.useGrids) withGrids.emplace(context, geodeticCrs.get(), PROJ_GRID_AVAILABILITY_IGNORED);
    base.reset(
        new Base{crs.geodeticCode, std::move(geodeticCrs), std::move(reference), std::move(withGrids), std::nullopt});
    return *base;
}

ShiftChoice DefinitionMaker::chooseShiftOf(const Survey& survey, Base& geodetic, ShiftEvidence evidence) const {
    ShiftChoice choice;
    choice.kind = ShiftKind::WGS_84;
    if (survey.classicText().isWgs84) return choice;
    evidence.mayFit = options.fit;
    if (geodetic.withGrids) evidence.grid = survey.findCommonGrid(*geodetic.withGrids);
    return chooseShift(evidence, [this, &geodetic] {
        if (!geodetic.published) geodetic.published = findPublishedShifts(context, geodetic.crs.get());
        return *geodetic.published;
    });
}

std::vector<CrsOutcome> makeAll(const std::vector<RegistryCrs>& list, const DefinitionOptions& options,
                                unsigned int threads, const std::function<void()>& advance) {
    const std::vector<std::vector<std::size_t>> groups = groupByGeodeticCrs(list);
    std::vector<CrsOutcome> outcomes(list.size());
    std::atomic<std::size_t> next{0};
    std::atomic<bool> isStopped{false};
    // A failure stops the other threads.
    const auto makeShare = [&] {
        try {
            DefinitionMaker maker(options);
            for (std::size_t group = next++; group < groups.size(); group = next++)
                for (const std::size_t i : groups[group]) {
                    if (isStopped) return;
                    outcomes[i] = maker.make(list[i]);
                    advance();
                }
        } catch (...) {
            isStopped = true;
            throw;
        }
    };
    std::vector<std::future<void>> helpers;
    try {
        while (helpers.size() + 1 < threads) helpers.push_back(std::async(std::launch::async, makeShare));
    } catch (const std::exception&) {
        // The threads that the system does give are enough.
    }
    makeShare();
    for (std::future<void>& helper : helpers) helper.get();
    return outcomes;
}

}  // namespace ProjDir
