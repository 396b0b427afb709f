#include "tools/projdir/DatumShift.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

#include <Eigen/Geometry>

#include "text/NumericText.h"

namespace ProjDir {

using CoordinateTransformation::readDouble;

namespace {

// The methods by which PROJ moves between datums. All other steps convert within a datum.
constexpr std::array<std::string_view, 12> DATUM_METHODS = {"helmert",    "molobadekas", "hgridshift", "xyzgridshift",
                                                            "gridshift",  "deformation", "defmodel",   "tinshift",
                                                            "geogoffset", "molodensky",  "affine",     "horner"};

// After so many operations that have no result at a place, PROJ accepts any that has one.
constexpr std::size_t LARGEST_TRY_COUNT = 3;
constexpr char OFFSHORE[] = "- offshore";

// In metres. Smaller differences from PROJ do not count.
constexpr double SAME_SHIFT = 0.01;
constexpr double GOOD_SHIFT = 1;
// Seven parameters must reduce the mean residual to this part of that of three, and by more than SAME_SHIFT.
constexpr double PART_LEFT_BY_SEVEN = 0.8;

// Of the 340 seven-parameter shifts in the registry (v10.076), 336, 322 and 321 are within these bounds. Metres,
// arc-seconds, parts per million.
constexpr double LARGEST_TRANSLATION = 1000;
constexpr double LARGEST_ROTATION = 15;
constexpr double LARGEST_SCALE = 25;

// The accuracies between which users distinguish, in metres.
constexpr std::array<double, 4> GRADES = {1, 2, 5, 10};

// The steps of "+proj=pipeline +step ...", or the only step of any other operation. Parameters before the first "+step"
// belong to the whole pipeline.
std::vector<ParameterList> readSteps(const std::string& operationText) {
    std::vector<ParameterList> steps(1);
    for (const ParameterList::Parameter& parameter : ParameterList(operationText)) {
        if (parameter.first == "step")
            steps.emplace_back();
        else
            steps.back().add(parameter);
    }
    if (steps.front().get("proj") == "pipeline") steps.erase(steps.begin());
    return steps;
}

std::vector<ParameterList> readDatumSteps(const std::string& operationText) {
    std::vector<ParameterList> steps = readSteps(operationText);
    const auto isConversion = [](const ParameterList& step) {
        return std::find(DATUM_METHODS.begin(), DATUM_METHODS.end(), step.get("proj")) == DATUM_METHODS.end();
    };
    steps.erase(std::remove_if(steps.begin(), steps.end(), isConversion), steps.end());
    return steps;
}

Vector readVector(const ParameterList& step, const char* x, const char* y, const char* z) {
    return {readDouble(step.get(x)), readDouble(step.get(y)), readDouble(step.get(z))};
}

// Molodensky-Badekas rotates about a point P: X' = P + T + (1 + S) ((X - P) + R x (X - P)). P is zero for a Helmert
// transformation.
std::optional<Helmert> readShiftStep(const ParameterList& step) {
    const std::string method = step.get("proj");
    if (method != "helmert" && method != "molobadekas") return std::nullopt;
    Helmert helmert{readVector(step, "x", "y", "z"), readVector(step, "rx", "ry", "rz"), readDouble(step.get("s"))};
    if (step.get("convention") == "coordinate_frame") helmert.rotation = -1.0 * helmert.rotation;
    if (method == "molobadekas") {
        const Vector pivot = readVector(step, "px", "py", "pz");
        const Vector movedPivot = helmert.apply(pivot) - helmert.translation;
        helmert.translation = helmert.translation + pivot - movedPivot;
    }
    return step.has("inv") ? invert(helmert) : helmert;
}

std::optional<Helmert> composeShift(const std::vector<ParameterList>& datumSteps) {
    std::optional<Helmert> total;
    for (const ParameterList& step : datumSteps) {
        const std::optional<Helmert> helmert = readShiftStep(step);
        if (!helmert) return std::nullopt;
        total = total ? compose(*total, *helmert) : *helmert;
    }
    return total ? total : Helmert{};
}

// The area of use of an operation; the world where the registry has none.
Area readAreaOfUse(const ProjContext& context, const PJ* operation) {
    constexpr Area WORLD{-180, -90, 180, 90};
    Area area = WORLD;
    proj_get_area_of_use(context.get(), operation, &area.west, &area.south, &area.east, &area.north, nullptr);
    return area.west < -180 || area.west > 180 ? WORLD : area;
}

// The datum steps computed by PROJ between geocentric systems.
std::optional<Vector> moveByProj(const ProjContext& context, const std::vector<ParameterList>& datumSteps,
                                 const Vector& point) {
    std::string text = "+proj=pipeline";
    for (const ParameterList& step : datumSteps) text += " +step " + step.toText();
    const ProjPtr<PJ> operation(proj_create(context.get(), text.c_str()));
    if (operation == nullptr) return std::nullopt;
    const auto [x, y, z] = transform(operation, PJ_FWD, {point.x(), point.y(), point.z()});
    return Vector{x, y, z};
}

// PROJ's authority is "INVERSE(EPSG)" for an operation that it has reversed, and "DERIVED_FROM(EPSG)" for one that it
// has adapted to other variants of the same two datums.
std::string idOf(const PJ* object) {
    const std::string authority = textOrEmpty(proj_get_id_auth_name(object, 0));
    const std::string code = textOrEmpty(proj_get_id_code(object, 0));
    if (code.empty()) return textOrEmpty(proj_get_name(object));
    const std::string inner = authority.substr(0, authority.find(')')).substr(authority.rfind('(') + 1);
    return (authority.find("INVERSE") == std::string::npos ? "" : "inverse of ") + inner + ":" + code;
}

// The identifiers of the operations that `operation` consists of, without conversions.
std::string describeSource(const ProjContext& context, const PJ* operation) {
    if (proj_get_type(operation) != PJ_TYPE_CONCATENATED_OPERATION) return idOf(operation);
    const int count = proj_concatoperation_get_step_count(context.get(), operation);
    std::string source;
    for (int i = 0; i < count; ++i) {
        const ProjPtr<PJ> step(proj_concatoperation_get_step(context.get(), operation, i));
        if (step == nullptr || proj_get_type(step.get()) == PJ_TYPE_CONVERSION) continue;
        source += (source.empty() ? "" : " + ") + idOf(step.get());
    }
    return source;
}

Operation describeOperation(const ProjContext& context, const PJ* operation) {
    const std::string text = textOrEmpty(proj_as_proj_string(context.get(), operation, PJ_PROJ_5, nullptr));
    const double accuracy = proj_coordoperation_get_accuracy(context.get(), operation);
    Operation used;
    used.source = describeSource(context, operation);
    used.isBallpark = proj_coordoperation_has_ballpark_transformation(context.get(), operation) != 0;
    used.gridShift = findGridShift(text);
    if (accuracy >= 0) used.accuracy = accuracy;
    used.shift = findShift(context, operation, text);
    return used;
}

// PROJ's operations from a CRS to EPSG:4326, in its order.
std::vector<ProjPtr<PJ>> listOperations(const ProjContext& context, const PJ* crs,
                                        PROJ_GRID_AVAILABILITY_USE availability, PROJ_CRS_EXTENT_USE extent) {
    const ProjPtr<PJ> wgs84(proj_create(context.get(), "EPSG:4326"));
    const ProjPtr<PJ_OPERATION_FACTORY_CONTEXT> factory(proj_create_operation_factory_context(context.get(), nullptr));
    proj_operation_factory_context_set_grid_availability_use(context.get(), factory.get(), availability);
    proj_operation_factory_context_set_spatial_criterion(context.get(), factory.get(),
                                                         PROJ_SPATIAL_CRITERION_PARTIAL_INTERSECTION);
    proj_operation_factory_context_set_crs_extent_use(context.get(), factory.get(), extent);
    return listObjects(context, proj_create_operations(context.get(), crs, wgs84.get(), factory.get()));
}

// The name of the installed file, which may differ from that in the text.
std::string findGridFile(const ProjContext& context, const PJ* operation) {
    const char* path = nullptr;
    proj_coordoperation_get_grid_used(context.get(), operation, 0, nullptr, &path, nullptr, nullptr, nullptr, nullptr,
                                      nullptr);
    const std::string text = textOrEmpty(path);
    return text.substr(text.rfind('/') + 1);
}

std::size_t gradeOf(const Residual& residual) {
    return static_cast<std::size_t>(std::lower_bound(GRADES.begin(), GRADES.end(), residual.largest) - GRADES.begin());
}

// The grade decides, then the mean. A single corner with another operation then does not spoil a shift that is right
// everywhere else.
bool isBetter(const Residual& left, const Residual& right) {
    if (gradeOf(left) != gradeOf(right)) return gradeOf(left) < gradeOf(right);
    return left.mean < right.mean;
}

bool justifiesSevenParameters(const Residual& seven, const Residual& three) {
    if (gradeOf(seven) != gradeOf(three)) return gradeOf(seven) < gradeOf(three);
    return seven.mean < PART_LEFT_BY_SEVEN * three.mean && seven.mean < three.mean - SAME_SHIFT;
}

void preferBest(const std::vector<Operation>& candidates, const std::vector<ShiftSample>& samples,
                ShiftChoice& choice) {
    for (const Operation& candidate : candidates) {
        const Residual residual = measureResidual(*candidate.shift, samples);
        if (choice.kind == ShiftKind::PUBLISHED && !isBetter(residual, choice.residual)) continue;
        choice = {ShiftKind::PUBLISHED, *candidate.shift, candidate.source, {}, candidate.accuracy, residual};
    }
}

bool agreesWithin(const ShiftChoice& choice, double metres) {
    return choice.kind == ShiftKind::PUBLISHED && choice.residual.largest <= metres;
}

ShiftChoice fit(const std::vector<ShiftSample>& samples, FitParameters parameters, const Helmert& start) {
    const Helmert helmert = roundForWriting(fitHelmert(samples, parameters, start));
    return {ShiftKind::FITTED, helmert, "", parameters, {}, measureResidual(helmert, samples)};
}

// Seven parameters from the smaller part of an area would give large errors in the rest of it.
ShiftChoice fitBest(const ShiftEvidence& evidence, const ShiftChoice& published) {
    std::vector<ShiftSample> samples = evidence.samples;
    adoptHeights(samples, published.helmert);
    ShiftChoice three = fit(samples, FitParameters::TRANSLATION, Helmert{});
    if (!evidence.coversHalf) return three;
    const Helmert& start = published.kind == ShiftKind::PUBLISHED ? published.helmert : three.helmert;
    const ShiftChoice seven = fit(samples, FitParameters::ALL_SEVEN, start);
    return isSane(seven.helmert) && justifiesSevenParameters(seven.residual, three.residual) ? seven : three;
}

ShiftChoice improveByFitting(const ShiftEvidence& evidence, const ShiftChoice& published) {
    const ShiftChoice fitted = fitBest(evidence, published);
    if (!isSane(fitted.helmert)) return published;
    const bool isImproved = published.kind != ShiftKind::PUBLISHED || isBetter(fitted.residual, published.residual);
    return isImproved ? fitted : published;
}

std::string describeResidual(const Residual& residual) {
    const auto toCentimetres = [](double metres) { return QSHelpers::convertNumericToText(metres, 2, false); };
    return ", residual " + toCentimetres(residual.rootMeanSquare) + " m, at most " + toCentimetres(residual.largest) +
           " m";
}

}  // namespace

std::optional<Helmert> readShift(const std::string& operationText) {
    return composeShift(readDatumSteps(operationText));
}

std::optional<Helmert> findShift(const ProjContext& context, const PJ* operation, const std::string& operationText) {
    const std::vector<ParameterList> steps = readDatumSteps(operationText);
    std::optional<Helmert> shift = composeShift(steps);
    if (!shift || operationText.find("+exact") == std::string::npos) return shift;
    const Vector centre = toGeocentric(WGS_84_ELLIPSOID, centreOf(readAreaOfUse(context, operation)));
    if (const auto moved = moveByProj(context, steps, centre)) shift->translation += *moved - shift->apply(centre);
    return roundForWriting(*shift);
}

// PROJ's texts have the name of a grid in today's distribution, even if the installed file has an older name.
std::string findGridShift(const std::string& operationText) {
    const std::vector<ParameterList> steps = readDatumSteps(operationText);
    const bool isGrid = steps.size() == 1 && steps.front().get("proj") == "hgridshift" && !steps.front().has("inv");
    return isGrid ? steps.front().get("grids") : "";
}

std::vector<Operation> findPublishedShifts(const ProjContext& context, const PJ* geodeticCrs) {
    std::vector<Operation> shifts;
    for (const ProjPtr<PJ>& operation :
         listOperations(context, geodeticCrs, PROJ_GRID_AVAILABILITY_IGNORED, PJ_CRS_EXTENT_NONE))
        if (Operation found = describeOperation(context, operation.get()); !found.isBallpark && found.shift)
            shifts.push_back(std::move(found));
    return shifts;
}

Reference::Reference(const ProjContext& projContext, const PJ* geodeticCrs, PROJ_GRID_AVAILABILITY_USE availability)
    : context(projContext), axes(projContext, geodeticCrs) {
    for (ProjPtr<PJ>& operation : listOperations(context, geodeticCrs, availability, PJ_CRS_EXTENT_SMALLEST))
        addCandidate(std::move(operation));
    descriptions.push_back({"no operation", true, ""});
}

void Reference::addCandidate(ProjPtr<PJ> operation) {
    descriptions.push_back(describeOperation(context, operation.get()));
    Candidate candidate;
    const char* areaName = nullptr;
    proj_get_area_of_use(context.get(), operation.get(), nullptr, nullptr, nullptr, nullptr, &areaName);
    candidate.area = readAreaOfUse(context, operation.get());
    candidate.isOffshore = textOrEmpty(areaName).find(OFFSHORE) != std::string::npos;
    candidate.name = textOrEmpty(proj_get_name(operation.get()));
    if (proj_get_type(operation.get()) == PJ_TYPE_CONCATENATED_OPERATION)
        candidate.stepCount = proj_concatoperation_get_step_count(context.get(), operation.get());
    candidate.accuracy = descriptions.back().accuracy.value_or(-1);
    candidate.isNull = descriptions.back().shift && descriptions.back().shift->isNull();
    candidate.operation = std::move(operation);
    candidates.push_back(std::move(candidate));
}

// PROJ's order: operations with an accuracy, then by the common extent, by accuracy, null shifts, by the number of
// steps, by the length of the name, and last by name, so that "(4)" comes before "(3)".
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

// As in PROJ, the stated accuracy decides; among equals the first.
std::size_t Reference::choose(const LonLat& place, const Ranking& ranking, const Ranking& excluded) const {
    std::size_t best = candidates.size();
    for (const std::size_t i : ranking) {
        const Candidate& candidate = candidates[i];
        if (!contains(candidate.area, place)) continue;
        if (std::find(excluded.begin(), excluded.end(), i) != excluded.end()) continue;
        const bool isFirst = best == candidates.size();
        const bool isEligible = candidate.accuracy >= 0 && !candidate.isOffshore;
        if (isFirst || (isEligible && candidate.accuracy < candidates[best].accuracy)) best = i;
    }
    return best;
}

// EPSG:4326 has latitude first.
std::optional<Reference::Move> Reference::move(const LonLat& place, const Ranking& ranking) const {
    Ranking failed;
    while (failed.size() < LARGEST_TRY_COUNT) {
        const std::size_t best = choose(place, ranking, failed);
        if (best == candidates.size()) break;
        const Coordinates moved = transform(candidates[best].operation, PJ_FWD, axes.write(place));
        const LonLat wgs84{moved[1], moved[0]};
        if (isFinite(wgs84)) return Move{place, wgs84, best};
        failed.push_back(best);
    }
    if (candidates.empty()) return std::nullopt;
    return Move{place, place, candidates.size()};
}

BestOperation::BestOperation(ProjContext& projContext, unsigned int code)
    : context(projContext),
      operation(proj_create_crs_to_crs(projContext.get(), nameOfCode(code).c_str(), "EPSG:4326", nullptr)) {}

// EPSG:4326 has latitude first.
std::vector<ReferencePoint> BestOperation::sample(const std::vector<LonLat>& places, bool withOperations) {
    std::vector<ReferencePoint> points;
    if (operation == nullptr) return points;
    // PROJ has a type for a single operation, and none for a choice among several.
    const bool hasChoice = proj_get_type(operation.get()) == PJ_TYPE_UNKNOWN;
    for (const LonLat& place : places) {
        const Coordinates crs = transform(operation, PJ_INV, {place.latitude, place.longitude, 0});
        if (!isFinite(crs)) continue;
        const Coordinates end = transform(operation, PJ_FWD, crs);
        if (!isFinite(end)) continue;
        const bool isAsked = withOperations && (hasChoice || operations.empty());
        points.push_back({crs, {end[1], end[0]}, isAsked ? lastUsedOperation() : 0});
    }
    return points;
}

std::size_t BestOperation::lastUsedOperation() {
    const ProjPtr<PJ> last(proj_trans_get_last_used_operation(operation.get()));
    const std::string name = last == nullptr ? "" : textOrEmpty(proj_get_name(last.get()));
    const auto [entry, isNew] = indexByName.emplace(name, operations.size());
    if (isNew) {
        operations.push_back(last == nullptr ? Operation{} : describeOperation(context, last.get()));
        std::string& grid = operations.back().gridShift;
        if (!grid.empty()) grid = findGridFile(context, last.get());
    }
    return entry->second;
}

bool isSane(const Helmert& helmert) {
    return helmert.translation.cwiseAbs().maxCoeff() <= LARGEST_TRANSLATION &&
           helmert.rotation.cwiseAbs().maxCoeff() <= LARGEST_ROTATION && std::fabs(helmert.scale) <= LARGEST_SCALE;
}

ShiftChoice chooseShift(const ShiftEvidence& evidence, const std::function<std::vector<Operation>()>& listPublished) {
    ShiftChoice choice;
    if (evidence.grid != nullptr)
        return {ShiftKind::GRID, {}, evidence.grid->gridShift, {}, evidence.grid->accuracy, {}};
    if (evidence.samples.empty()) return choice;
    preferBest(evidence.used, evidence.samples, choice);
    if (agreesWithin(choice, SAME_SHIFT)) return choice;
    preferBest(listPublished(), evidence.samples, choice);
    if (choice.kind == ShiftKind::UNKNOWN) choice.residual = measureResidual(Helmert{}, evidence.samples);
    return agreesWithin(choice, GOOD_SHIFT) || !evidence.mayFit ? choice : improveByFitting(evidence, choice);
}

std::string writeDatumShift(const ShiftChoice& choice) {
    if (choice.kind == ShiftKind::WGS_84) return "+datum=WGS84";
    if (choice.kind == ShiftKind::UNKNOWN) return "";
    if (choice.kind == ShiftKind::GRID) return "+nadgrids=" + choice.source;
    return "+towgs84=" + writeHelmert(choice.helmert);
}

std::string describeShift(const ShiftChoice& choice) {
    const std::string residual = describeResidual(choice.residual);
    if (choice.kind == ShiftKind::WGS_84) return "";
    if (choice.kind == ShiftKind::GRID) return "shift by grid " + choice.source;
    if (choice.kind == ShiftKind::UNKNOWN)
        return choice.residual.largest > 0 ? "no published shift" + residual : "PROJ knows no shift";
    if (choice.kind == ShiftKind::PUBLISHED)
        return "shift " + choice.source + (choice.residual.largest <= GOOD_SHIFT ? "" : residual);
    return std::string("shift fitted, ") + (choice.fitted == FitParameters::ALL_SEVEN ? "7" : "3") + " parameters" +
           residual;
}

}  // namespace ProjDir
