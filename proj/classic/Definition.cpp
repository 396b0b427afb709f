#include "proj/classic/Definition.h"

#include <algorithm>
#include <map>

#include "proj/classic/ProjectionPtr.h"

namespace ClassicProj {

namespace {

constexpr std::initializer_list<const char*> ELLIPSOID_KEYS = {"ellps", "a",   "b",       "rf",      "f",   "e",
                                                               "es",    "R",   "R_A",     "R_V",     "R_a", "R_g",
                                                               "R_h",   "R_C", "R_lat_a", "R_lat_g", "R_m"};

// What a geographic CRS takes from its definition besides the ellipsoid. Others, such as "+lon_0", have no
// meaning there.
constexpr std::initializer_list<const char*> LONG_LAT_KEYS = {"pm", "axis", "vunits", "vto_meter", "lon_wrap", "geoc"};

// What the pair of two CRS takes care of, or has no meaning in a step.
constexpr std::initializer_list<const char*> KEYS_OUTSIDE_STEPS = {
    "init", "datum", "towgs84", "nadgrids", "geoidgrids", "no_defs", "type", "title", "wktext", "catalog", "date"};

constexpr std::initializer_list<const char*> LONG_LAT_PROJECTIONS = {"longlat", "latlong", "lonlat", "latlon"};

int whyNot(PJ_CONTEXT* proj) {
    const int error = proj_context_errno(proj);
    return error != 0 ? error : PROJ_ERR_INVALID_OP;
}

int checkProjection(const std::string& step, PJ_CONTEXT* proj) {
    const ProjectionPtr projection(proj_create(proj, step.c_str()));
    return projection == nullptr ? whyNot(proj) : 0;
}

// Semi-axes, read off the geocentric coordinates of a point on the equator and of a pole.
int measureEllipsoid(const std::string& parameters, PJ_CONTEXT* proj, Ellipsoid& ellipsoid) {
    constexpr double QUARTER_TURN = 1.5707963267948966;
    const ProjectionPtr cartesian(proj_create(proj, ("+proj=cart" + parameters).c_str()));
    if (cartesian == nullptr) return whyNot(proj);
    ellipsoid.semiMajor = proj_trans(cartesian.get(), PJ_FWD, proj_coord(0, 0, 0, 0)).xyz.x;
    ellipsoid.semiMinor = proj_trans(cartesian.get(), PJ_FWD, proj_coord(0, QUARTER_TURN, 0, 0)).xyz.z;
    const double ratio = ellipsoid.semiMinor / ellipsoid.semiMajor;
    ellipsoid.eccentricitySquared = (1 - ratio) * (1 + ratio);
    return 0;
}

// Definitions share a handful of ellipsoids, each of which is measured once.
int findEllipsoid(const ParameterList& parameters, PJ_CONTEXT* proj, Ellipsoid& ellipsoid) {
    static auto& known = *new std::map<std::string, Ellipsoid>;
    const std::string key = parameters.only(ELLIPSOID_KEYS).toText();
    const auto found = known.find(key);
    if (found != known.end()) {
        ellipsoid = found->second;
        return 0;
    }
    const int error = measureEllipsoid(key, proj, ellipsoid);
    if (error == 0) known.emplace(key, ellipsoid);
    return error;
}

// The defaults of PROJ for a definition that leaves the figure of the earth open.
void addDefaultEllipsoid(ParameterList& parameters) {
    if (!parameters.has("no_defs") && !parameters.hasAnyOf(ELLIPSOID_KEYS))
        parameters.addDefaults(ParameterList("ellps=GRS80"));
}

bool isPipeline(const ParameterList& parameters) {
    return parameters.get("proj") == "pipeline" || parameters.hasAnyOf({"step", "inv"});
}

// "+over": longitudes of a geographic CRS are handed on as they are, only "+lon_wrap" moves them.
std::string longLatStep(const ParameterList& parameters) {
    return "+proj=longlat +over" + parameters.only(ELLIPSOID_KEYS).toText() + parameters.only(LONG_LAT_KEYS).toText();
}

std::string projectionStep(const ParameterList& parameters) {
    return parameters.without(KEYS_OUTSIDE_STEPS).toText().substr(1);
}

}  // namespace

int makeDefinition(ParameterList parameters, PJ_CONTEXT* proj, Definition& definition) {
    if (isPipeline(parameters) || !expandDatum(parameters)) return PROJ_ERR_INVALID_OP_ILLEGAL_ARG_VALUE;
    addDefaultEllipsoid(parameters);
    if (!parameters.has("proj") || !parameters.hasAnyOf(ELLIPSOID_KEYS)) return PROJ_ERR_INVALID_OP_MISSING_ARG;
    const std::string projection = parameters.get("proj");
    definition.isGeocentric = projection == "geocent";
    definition.isLongLat =
        std::find(LONG_LAT_PROJECTIONS.begin(), LONG_LAT_PROJECTIONS.end(), projection) != LONG_LAT_PROJECTIONS.end();
    definition.step = definition.isLongLat ? longLatStep(parameters) : projectionStep(parameters);
    definition.geoidGrids = parameters.get("geoidgrids");
    Ellipsoid ellipsoid;
    Ellipsoid wgs84;
    int error = findEllipsoid(parameters, proj, ellipsoid);
    if (error == 0) error = findEllipsoid(ParameterList("ellps=WGS84"), proj, wgs84);
    // All of the definition must make sense, also what has no meaning for a geographic CRS.
    if (error == 0) error = checkProjection(projectionStep(parameters), proj);
    if (error != 0) return error;
    definition.datum = readDatum(parameters, ellipsoid, wgs84);
    if (definition.isLongLat && !parameters.hasAnyOf(LONG_LAT_KEYS)) definition.step.clear();
    return 0;
}

}  // namespace ClassicProj
