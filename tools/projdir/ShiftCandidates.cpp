#include "tools/projdir/ShiftCandidates.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "text/NumericText.h"
#include "text/ParameterList.h"

namespace ProjDir {

using CoordinateTransformation::ParameterList;
using CoordinateTransformation::readDouble;

namespace {

// The steps by which PROJ moves from one datum to another. All others bring coordinates into another form.
constexpr std::array<std::string_view, 12> DATUM_SHIFTS = {"helmert",    "molobadekas", "hgridshift", "xyzgridshift",
                                                           "gridshift",  "deformation", "defmodel",   "tinshift",
                                                           "geogoffset", "molodensky",  "affine",     "horner"};

// The steps of "+proj=pipeline +step ...", or the one step of any other operation. What comes before the first "+step"
// belongs to the pipeline as a whole.
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

bool shiftsDatum(const ParameterList& step) {
    return std::find(DATUM_SHIFTS.begin(), DATUM_SHIFTS.end(), step.get("proj")) != DATUM_SHIFTS.end();
}

std::vector<ParameterList> readDatumShifts(const std::string& operationText) {
    std::vector<ParameterList> steps = readSteps(operationText);
    steps.erase(
        std::remove_if(steps.begin(), steps.end(), [](const ParameterList& step) { return !shiftsDatum(step); }),
        steps.end());
    return steps;
}

Vector readVector(const ParameterList& step, const char* x, const char* y, const char* z) {
    return {readDouble(step.get(x)), readDouble(step.get(y)), readDouble(step.get(z))};
}

Helmert readHelmertStep(const ParameterList& step) {
    Helmert helmert{readVector(step, "x", "y", "z"), readVector(step, "rx", "ry", "rz"), readDouble(step.get("s"))};
    if (step.get("convention") == "coordinate_frame") helmert.rotation = -1.0 * helmert.rotation;
    return helmert;
}

// The rotations of Molodensky-Badekas turn about a point P of its own: X' = P + T + (1 + S) ((X - P) + R x (X - P)).
Helmert readMolodenskyBadekasStep(const ParameterList& step) {
    Helmert helmert = readHelmertStep(step);
    const Vector pivot = readVector(step, "px", "py", "pz");
    const Vector movedPivot = helmert.apply(pivot) - helmert.translation;
    helmert.translation = helmert.translation + pivot - movedPivot;
    return helmert;
}

std::optional<Helmert> readShiftStep(const ParameterList& step) {
    const std::string kind = step.get("proj");
    if (kind != "helmert" && kind != "molobadekas") return std::nullopt;
    const Helmert helmert = kind == "helmert" ? readHelmertStep(step) : readMolodenskyBadekasStep(step);
    return step.has("inv") ? invert(helmert) : helmert;
}

// PROJ wraps the authority of an operation that it has turned round ("INVERSE(EPSG)") or led between other
// variants of the same two datums ("DERIVED_FROM(EPSG)").
std::string idOf(const PJ* object) {
    const std::string authority = textOrEmpty(proj_get_id_auth_name(object, 0));
    const std::string code = textOrEmpty(proj_get_id_code(object, 0));
    if (code.empty()) return textOrEmpty(proj_get_name(object));
    const std::string inner = authority.substr(0, authority.find(')')).substr(authority.rfind('(') + 1);
    return (authority.find("INVERSE") == std::string::npos ? "" : "inverse of ") + inner + ":" + code;
}

bool isConversion(const PJ* operation) { return proj_get_type(operation) == PJ_TYPE_CONVERSION; }

ProjPtr<PJ_OPERATION_FACTORY_CONTEXT> makeFactory(const ProjContext& context) {
    ProjPtr<PJ_OPERATION_FACTORY_CONTEXT> factory(proj_create_operation_factory_context(context.get(), nullptr));
    PJ_CONTEXT* const proj = context.get();
    proj_operation_factory_context_set_grid_availability_use(proj, factory.get(), PROJ_GRID_AVAILABILITY_IGNORED);
    proj_operation_factory_context_set_spatial_criterion(proj, factory.get(),
                                                         PROJ_SPATIAL_CRITERION_PARTIAL_INTERSECTION);
    proj_operation_factory_context_set_crs_extent_use(proj, factory.get(), PJ_CRS_EXTENT_NONE);
    return factory;
}

Vector centreOf(const ProjContext& context, const PJ* operation) {
    const LonLat centre = sampleArea(readAreaOfUse(context, operation), 3)[4];
    return toGeocentric(WGS_84_ELLIPSOID, centre);
}

// The datum shifts of an operation's text alone, from one geocentric system to another.
std::string writeDatumShifts(const std::string& operationText) {
    std::string text = "+proj=pipeline";
    for (const ParameterList& step : readDatumShifts(operationText)) text += " +step " + step.toText();
    return text;
}

std::optional<Vector> moveByProj(const ProjContext& context, const std::string& text, const Vector& point) {
    const ProjPtr<PJ> operation(proj_create(context.get(), text.c_str()));
    if (operation == nullptr) return std::nullopt;
    const PJ_XYZ moved = proj_trans(operation.get(), PJ_FWD, proj_coord(point.x(), point.y(), point.z(), HUGE_VAL)).xyz;
    return Vector{moved.x, moved.y, moved.z};
}

std::optional<PublishedShift> readPublishedShift(const ProjContext& context, PJ* operation) {
    if (proj_coordoperation_has_ballpark_transformation(context.get(), operation) != 0) return std::nullopt;
    const std::string text = textOrEmpty(proj_as_proj_string(context.get(), operation, PJ_PROJ_5, nullptr));
    const std::optional<Helmert> helmert = findShift(context, operation, text);
    if (!helmert) return std::nullopt;
    return PublishedShift{describeSource(context, operation), *helmert, readAccuracy(context, operation)};
}

}  // namespace

std::optional<Helmert> readShift(const std::string& operationText) {
    std::optional<Helmert> total;
    for (const ParameterList& step : readDatumShifts(operationText)) {
        const std::optional<Helmert> helmert = readShiftStep(step);
        if (!helmert) return std::nullopt;
        total = total ? compose(*total, *helmert) : *helmert;
    }
    return total ? total : Helmert{};
}

std::optional<Helmert> findShift(const ProjContext& context, const PJ* operation, const std::string& operationText) {
    std::optional<Helmert> shift = readShift(operationText);
    if (!shift || operationText.find("+exact") == std::string::npos) return shift;
    const Vector centre = centreOf(context, operation);
    const std::optional<Vector> moved = moveByProj(context, writeDatumShifts(operationText), centre);
    if (moved) shift->translation += *moved - shift->apply(centre);
    return roundForWriting(*shift);
}

Area readAreaOfUse(const ProjContext& context, const PJ* object) {
    constexpr Area WORLD{-180, -90, 180, 90};
    Area area = WORLD;
    proj_get_area_of_use(context.get(), object, &area.west, &area.south, &area.east, &area.north, nullptr);
    return area.west < -180 || area.west > 180 ? WORLD : area;
}

bool isGridShift(const std::string& operationText) {
    const std::vector<ParameterList> steps = readDatumShifts(operationText);
    return steps.size() == 1 && steps.front().get("proj") == "hgridshift" && !steps.front().has("inv");
}

std::string describeSource(const ProjContext& context, const PJ* operation) {
    if (proj_get_type(operation) != PJ_TYPE_CONCATENATED_OPERATION) return idOf(operation);
    const int count = proj_concatoperation_get_step_count(context.get(), operation);
    std::string source;
    for (int i = 0; i < count; ++i) {
        const ProjPtr<PJ> step(proj_concatoperation_get_step(context.get(), operation, i));
        if (step == nullptr || isConversion(step.get())) continue;
        source += (source.empty() ? "" : " + ") + idOf(step.get());
    }
    return source;
}

std::optional<double> readAccuracy(const ProjContext& context, const PJ* operation) {
    const double accuracy = proj_coordoperation_get_accuracy(context.get(), operation);
    return accuracy < 0 ? std::nullopt : std::optional<double>(accuracy);
}

std::vector<PublishedShift> findPublishedShifts(const ProjContext& context, const PJ* geodeticCrs) {
    const ProjPtr<PJ> wgs84(proj_create(context.get(), "EPSG:4326"));
    const ProjPtr<PJ_OPERATION_FACTORY_CONTEXT> factory = makeFactory(context);
    const ProjPtr<PJ_OBJ_LIST> operations(
        proj_create_operations(context.get(), geodeticCrs, wgs84.get(), factory.get()));
    std::vector<PublishedShift> shifts;
    const int count = operations == nullptr ? 0 : proj_list_get_count(operations.get());
    for (int i = 0; i < count; ++i) {
        const ProjPtr<PJ> operation(proj_list_get(context.get(), operations.get(), i));
        if (auto shift = readPublishedShift(context, operation.get())) shifts.push_back(std::move(*shift));
    }
    return shifts;
}

}  // namespace ProjDir
