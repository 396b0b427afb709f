#include "tools/projdir/ShiftCandidates.h"

#include <algorithm>
#include <array>

#include "tools/projdir/PipelineText.h"

namespace ProjDir {

namespace {

// The steps by which PROJ moves from one datum to another. All others bring coordinates into another form.
constexpr std::array<const char*, 12> SHIFTING = {"helmert",    "molobadekas", "hgridshift", "xyzgridshift",
                                                  "gridshift",  "deformation", "defmodel",   "tinshift",
                                                  "geogoffset", "molodensky",  "affine",     "horner"};

bool movesDatum(const PipelineStep& step) {
    return std::any_of(SHIFTING.begin(), SHIFTING.end(), [&step](const char* name) { return step.projection == name; });
}

std::vector<PipelineStep> keepShifting(std::vector<PipelineStep> steps) {
    steps.erase(std::remove_if(steps.begin(), steps.end(), [](const PipelineStep& step) { return !movesDatum(step); }),
                steps.end());
    return steps;
}

Vector readVector(const PipelineStep& step, const char* x, const char* y, const char* z) {
    return {step.number(x), step.number(y), step.number(z)};
}

Helmert readHelmertStep(const PipelineStep& step) {
    Helmert helmert{readVector(step, "x", "y", "z"), readVector(step, "rx", "ry", "rz"), step.number("s")};
    const auto convention = step.parameters.find("convention");
    if (convention != step.parameters.end() && convention->second == "coordinate_frame")
        helmert.rotation = -1.0 * helmert.rotation;
    return helmert;
}

// The rotations of Molodensky-Badekas turn about a point P of its own: X' = P + T + (1 + S) ((X - P) + R x (X - P)).
Helmert readMolodenskyBadekasStep(const PipelineStep& step) {
    Helmert helmert = readHelmertStep(step);
    const Vector pivot = readVector(step, "px", "py", "pz");
    const Vector movedPivot = helmert.apply(pivot) - helmert.translation;
    helmert.translation = helmert.translation + pivot - movedPivot;
    return helmert;
}

std::optional<Helmert> readShiftStep(const PipelineStep& step) {
    if (step.projection != "helmert" && step.projection != "molobadekas") return std::nullopt;
    const Helmert helmert = step.projection == "helmert" ? readHelmertStep(step) : readMolodenskyBadekasStep(step);
    return step.isInverse ? invert(helmert) : helmert;
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

FactoryPtr makeFactory(const ProjContext& context) {
    FactoryPtr factory(proj_create_operation_factory_context(context.get(), nullptr));
    PJ_CONTEXT* const proj = context.get();
    proj_operation_factory_context_set_grid_availability_use(proj, factory.get(), PROJ_GRID_AVAILABILITY_IGNORED);
    proj_operation_factory_context_set_spatial_criterion(proj, factory.get(),
                                                         PROJ_SPATIAL_CRITERION_PARTIAL_INTERSECTION);
    proj_operation_factory_context_set_crs_extent_use(proj, factory.get(), PJ_CRS_EXTENT_NONE);
    return factory;
}

std::optional<PublishedShift> readPublishedShift(const ProjContext& context, PJ* operation) {
    if (proj_coordoperation_has_ballpark_transformation(context.get(), operation) != 0) return std::nullopt;
    const std::string text = textOrEmpty(proj_as_proj_string(context.get(), operation, PJ_PROJ_5, nullptr));
    const std::optional<Helmert> helmert = readShift(text);
    if (!helmert) return std::nullopt;
    return PublishedShift{describeSource(context, operation), *helmert};
}

}  // namespace

std::optional<Helmert> readShift(const std::string& operationText) {
    std::optional<Helmert> total;
    for (const PipelineStep& step : keepShifting(parsePipeline(operationText))) {
        const std::optional<Helmert> helmert = readShiftStep(step);
        if (!helmert) return std::nullopt;
        total = total ? compose(*total, *helmert) : *helmert;
    }
    return total ? total : Helmert{};
}

bool isGridShift(const std::string& operationText) {
    const std::vector<PipelineStep> steps = keepShifting(parsePipeline(operationText));
    return steps.size() == 1 && steps.front().projection == "hgridshift" && !steps.front().isInverse;
}

std::string describeSource(const ProjContext& context, const PJ* operation) {
    if (proj_get_type(operation) != PJ_TYPE_CONCATENATED_OPERATION) return idOf(operation);
    const int count = proj_concatoperation_get_step_count(context.get(), operation);
    std::string source;
    for (int i = 0; i < count; ++i) {
        const PjPtr step(proj_concatoperation_get_step(context.get(), operation, i));
        if (step == nullptr || isConversion(step.get())) continue;
        source += (source.empty() ? "" : " + ") + idOf(step.get());
    }
    return source;
}

std::vector<PublishedShift> findPublishedShifts(const ProjContext& context, const PJ* geodeticCrs) {
    const PjPtr wgs84(proj_create(context.get(), "EPSG:4326"));
    const FactoryPtr factory = makeFactory(context);
    const PjListPtr operations(proj_create_operations(context.get(), geodeticCrs, wgs84.get(), factory.get()));
    std::vector<PublishedShift> shifts;
    const int count = operations == nullptr ? 0 : proj_list_get_count(operations.get());
    for (int i = 0; i < count; ++i) {
        const PjPtr operation(proj_list_get(context.get(), operations.get(), i));
        if (auto shift = readPublishedShift(context, operation.get())) shifts.push_back(std::move(*shift));
    }
    return shifts;
}

}  // namespace ProjDir
