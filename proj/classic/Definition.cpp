#include "proj/classic/Definition.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <string_view>

#include "proj/classic/ProjObjects.h"
#include "text/NumericText.h"

namespace ClassicProj {
namespace {

using CoordinateTransformation::readDouble;
using CoordinateTransformation::writeDouble;

// The named datums of the classic interface, with the shifts of PROJ 6 to 7 (proj.org, "Geodetic datums").
struct NamedDatum {
    const char* name;
    const char* parameters;
};

constexpr NamedDatum NAMED_DATUMS[] = {
    {"WGS84", "towgs84=0,0,0 ellps=WGS84"},
    {"GGRS87", "towgs84=-199.87,74.79,246.62 ellps=GRS80"},
    {"NAD83", "towgs84=0,0,0 ellps=GRS80"},
    {"NAD27", "nadgrids=@conus,@alaska,@ntv2_0.gsb,@ntv1_can.dat ellps=clrk66"},
    {"potsdam", "nadgrids=@BETA2007.gsb ellps=bessel"},
    {"carthage", "towgs84=-263.0,6.0,431.0 ellps=clrk80ign"},
    {"hermannskogel", "towgs84=577.326,90.129,463.919,5.137,1.474,5.297,2.4232 ellps=bessel"},
    {"ire65", "towgs84=482.530,-130.596,564.557,-1.042,-0.214,-0.631,8.15 ellps=mod_airy"},
    {"nzgd49", "towgs84=59.47,-5.04,187.44,0.47,-0.1,1.024,-4.5993 ellps=intl"},
    {"OSGB36", "towgs84=446.448,-125.157,542.060,0.1502,0.2470,0.8421,-20.4894 ellps=airy"},
};

// An ellipsoid whose squared eccentricity differs by less than this counts as WGS 84; GRS 80 does.
constexpr double WGS_84_SEMI_MAJOR = 6378137.0;
constexpr double WGS_84_ECCENTRICITY_SQUARED = 0.006694379990;
constexpr double ECCENTRICITY_TOLERANCE = 0.000000000050;

std::array<double, 7> readToWgs84(std::string_view text) {
    std::array<double, 7> values{};
    for (double& value : values) {
        const std::size_t comma = text.find(',');
        value = readDouble(text.substr(0, comma));
        if (comma == std::string_view::npos) break;
        text.remove_prefix(comma + 1);
    }
    return values;
}

bool isWgs84OrGrs80(const Ellipsoid& ellipsoid) {
    return ellipsoid.semiMajor == WGS_84_SEMI_MAJOR &&
           std::fabs(ellipsoid.eccentricitySquared - WGS_84_ECCENTRICITY_SQUARED) < ECCENTRICITY_TOLERANCE;
}

DatumKind kindOfHelmert(const std::array<double, 7>& toWgs84, const Ellipsoid& ellipsoid) {
    const bool allZero = std::all_of(toWgs84.begin(), toWgs84.end(), [](double value) { return value == 0; });
    return allZero && isWgs84OrGrs80(ellipsoid) ? DatumKind::WGS_84 : DatumKind::HELMERT;
}

bool haveOneId(const Datum& left, const Datum& right) { return left.id && left.id == right.id; }

bool isSame(const Datum& left, const Datum& right) {
    return left.kind == right.kind && left.ellipsoid.semiMajor == right.ellipsoid.semiMajor &&
           std::fabs(left.ellipsoid.eccentricitySquared - right.ellipsoid.eccentricitySquared) <=
               ECCENTRICITY_TOLERANCE &&
           left.toWgs84 == right.toWgs84 && left.grids == right.grids;
}

}  // namespace

bool operator==(const Ellipsoid& left, const Ellipsoid& right) {
    return left.semiMajor == right.semiMajor && left.eccentricitySquared == right.eccentricitySquared;
}

bool expandDatum(ParameterList& parameters) {
    if (!parameters.has("datum")) return true;
    const std::string name = parameters.get("datum");
    for (const NamedDatum& datum : NAMED_DATUMS) {
        if (name != datum.name) continue;
        parameters.addDefaults(ParameterList(datum.parameters));
        return true;
    }
    return false;
}

Datum readDatum(const ParameterList& parameters, const Ellipsoid& ellipsoid, const Ellipsoid& wgs84) {
    Datum datum;
    datum.ellipsoid = ellipsoid;
    datum.meetingEllipsoid = ellipsoid;
    if (parameters.has("datum_id")) datum.id = parameters.get("datum_id");
    if (parameters.has("nadgrids")) {
        datum.kind = DatumKind::GRIDS;
        datum.grids = parameters.get("nadgrids");
        datum.meetingEllipsoid = wgs84;
    } else if (parameters.has("towgs84")) {
        datum.toWgs84 = readToWgs84(parameters.get("towgs84"));
        datum.kind = kindOfHelmert(datum.toWgs84, ellipsoid);
    }
    return datum;
}

bool isFinite(const Datum& datum) {
    return std::all_of(datum.toWgs84.begin(), datum.toWgs84.end(), [](double value) { return std::isfinite(value); });
}

bool needsNoShift(const Datum& source, const Datum& target) {
    return source.kind == DatumKind::UNKNOWN || target.kind == DatumKind::UNKNOWN || haveOneId(source, target) ||
           isSame(source, target);
}

namespace {

constexpr std::initializer_list<const char*> ELLIPSOID_KEYS = {"ellps", "a",   "b",       "rf",      "f",   "e",
                                                               "es",    "R",   "R_A",     "R_V",     "R_a", "R_g",
                                                               "R_h",   "R_C", "R_lat_a", "R_lat_g", "R_m"};

// The parameters of a geographic CRS besides the ellipsoid. Others, such as "+lon_0", have no meaning for it.
constexpr std::initializer_list<const char*> LONG_LAT_KEYS = {"pm", "axis", "vunits", "vto_meter", "lon_wrap", "geoc"};

// The units of lengths, and of heights without vertical units.
constexpr std::initializer_list<const char*> UNIT_KEYS = {"units", "to_meter"};

// The parameters of a geocentric CRS that PROJ applies and the classic interface ignores.
constexpr std::initializer_list<const char*> KEYS_WITHOUT_MEANING_IN_GEOCENTRIC = {"lon_0", "geoc"};

// The parameters that belong to a pair of CRS or have no meaning in a step.
constexpr std::initializer_list<const char*> KEYS_OUTSIDE_STEPS = {"init",     "datum",      "datum_id", "towgs84",
                                                                   "nadgrids", "geoidgrids", "no_defs",  "type",
                                                                   "title",    "wktext",     "catalog",  "date"};

constexpr std::initializer_list<const char*> LONG_LAT_PROJECTIONS = {"longlat", "latlong", "lonlat", "latlon"};

// The projections that the classic interface computes on the sphere of the semi-major axis. PROJ uses the ellipsoid for
// gnom since 9.2, for eqc since 9.8 and for isea since 9.9; wag6 has another scale since 9.7.
constexpr std::initializer_list<const char*> SPHERICAL_PROJECTIONS = {"eqc", "gnom", "isea", "wag6"};
constexpr double LENGTH_OF_A_RADIAN_IN_WAG6 = 0.94745;

bool isOneOf(std::initializer_list<const char*> names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

int errorOf(PJ_CONTEXT* proj) {
    const int error = proj_context_errno(proj);
    return error != 0 ? error : PROJ_ERR_INVALID_OP;
}

int checkProjection(const std::string& step, PJ_CONTEXT* proj) {
    const ProjectionPtr projection = makeProjection(proj, step);
    return projection == nullptr ? errorOf(proj) : 0;
}

bool isValidEllipsoid(const Ellipsoid& ellipsoid) {
    return std::isfinite(ellipsoid.semiMajor) && std::isfinite(ellipsoid.semiMinor) && ellipsoid.semiMajor > 0 &&
           ellipsoid.semiMinor > 0;
}

// Finds the semi-axes: they are geocentric coordinates of a point on the equator and of a pole.
int measureEllipsoid(const std::string& parameters, PJ_CONTEXT* proj, Ellipsoid& ellipsoid) {
    constexpr double QUARTER_TURN = 1.5707963267948966;
    const ProjectionPtr cartesian = makeProjection(proj, "+proj=cart" + parameters);
    if (cartesian == nullptr) return errorOf(proj);
    ellipsoid.semiMajor = proj_trans(cartesian.get(), PJ_FWD, proj_coord(0, 0, 0, 0)).xyz.x;
    ellipsoid.semiMinor = proj_trans(cartesian.get(), PJ_FWD, proj_coord(0, QUARTER_TURN, 0, 0)).xyz.z;
    const double ratio = ellipsoid.semiMinor / ellipsoid.semiMajor;
    ellipsoid.eccentricitySquared = (1 - ratio) * (1 + ratio);
    return isValidEllipsoid(ellipsoid) ? 0 : PROJ_ERR_INVALID_OP_ILLEGAL_ARG_VALUE;
}

// Definitions share a few ellipsoids, so each is measured only once.
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

// PROJ's default for a definition without a figure of the earth.
void addDefaultEllipsoid(ParameterList& parameters) {
    if (!parameters.has("no_defs") && !parameters.hasAnyOf(ELLIPSOID_KEYS))
        parameters.addDefaults(ParameterList("ellps=GRS80"));
}

bool isPipeline(const ParameterList& parameters) {
    return parameters.get("proj") == "pipeline" || parameters.hasAnyOf({"step", "inv"});
}

// With "+over" PROJ does not wrap the longitudes of a geographic CRS; only "+lon_wrap" does.
std::string longLatStep(const ParameterList& parameters) {
    return "+proj=longlat +over" + parameters.only(ELLIPSOID_KEYS).toText() + parameters.only(LONG_LAT_KEYS).toText() +
           parameters.only(UNIT_KEYS).toText();
}

std::string projectionStep(const ParameterList& parameters) {
    return parameters.without(KEYS_OUTSIDE_STEPS).toText().substr(1);
}

// The factor from PROJ's lengths to those of the classic interface.
double scaleOf(const std::string& projection, PJ_CONTEXT* proj) {
    if (projection != "wag6") return 1;
    const ProjectionPtr wag6 = makeProjection(proj, "+proj=wag6 +R=1");
    return wag6 == nullptr ? 1
                           : LENGTH_OF_A_RADIAN_IN_WAG6 / proj_trans(wag6.get(), PJ_FWD, proj_coord(0, 1, 0, 0)).xy.y;
}

std::string sphericalStep(const ParameterList& parameters, double radius) {
    return projectionStep(parameters.without(ELLIPSOID_KEYS)) + " +R=" + writeDouble(radius);
}

// PROJ ignores units and false easting and northing for rotated longitudes and latitudes, but applies them in a plane.
// The plane that maps angles to themselves has the same coordinates, on an ellipsoid of the same shape with the
// semi-major axis 1.
std::string rotatedPoleStep(const ParameterList& parameters, const Ellipsoid& ellipsoid) {
    return projectionStep(parameters.without(ELLIPSOID_KEYS).without({"o_proj", "z_0"})) +
           " +o_proj=affine +a=1 +b=" + writeDouble(ellipsoid.semiMinor / ellipsoid.semiMajor);
}

// The projection; for an oblique projection the one after the rotation.
std::string projectionOf(const ParameterList& parameters) {
    return parameters.get(parameters.get("proj") == "ob_tran" ? "o_proj" : "proj");
}

std::string writeStep(const ParameterList& parameters, const Definition& definition, PJ_CONTEXT* proj) {
    const std::string projection = projectionOf(parameters);
    const Ellipsoid& ellipsoid = definition.datum.ellipsoid;
    if (definition.isLongLat) return longLatStep(parameters);
    if (definition.isGeocentric) return projectionStep(parameters.without(KEYS_WITHOUT_MEANING_IN_GEOCENTRIC));
    if (isOneOf(LONG_LAT_PROJECTIONS, projection)) return rotatedPoleStep(parameters, ellipsoid);
    if (isOneOf(SPHERICAL_PROJECTIONS, projection))
        return sphericalStep(parameters, ellipsoid.semiMajor * scaleOf(projection, proj));
    return projectionStep(parameters);
}

// Whether the step leaves geodetic coordinates unchanged. A step with units in metres does.
bool isNoOperation(const ParameterList& parameters, const Definition& definition, PJ_CONTEXT* proj) {
    if (!definition.isLongLat || parameters.hasAnyOf(LONG_LAT_KEYS)) return false;
    if (!parameters.hasAnyOf(UNIT_KEYS)) return true;
    const ProjectionPtr longLat = makeProjection(proj, definition.step);
    return longLat != nullptr && proj_trans(longLat.get(), PJ_FWD, proj_coord(0, 0, 1, 0)).xyz.z == 1;
}

// Whether the parameters contain no NUL byte, no pipeline and no infinite number.
bool isReadable(const ParameterList& parameters) {
    return !parameters.hasNul() && !isPipeline(parameters) && !parameters.without(KEYS_OUTSIDE_STEPS).hasInfinity();
}

// The whole definition must be valid, including parameters without meaning for a geographic CRS.
int findDatum(const ParameterList& parameters, PJ_CONTEXT* proj, Definition& definition) {
    Ellipsoid ellipsoid;
    Ellipsoid wgs84;
    int error = findEllipsoid(parameters, proj, ellipsoid);
    if (error == 0) error = findEllipsoid(ParameterList("ellps=WGS84"), proj, wgs84);
    if (error == 0) error = checkProjection(projectionStep(parameters), proj);
    if (error != 0) return error;
    definition.datum = readDatum(parameters, ellipsoid, wgs84);
    return isFinite(definition.datum) ? 0 : PROJ_ERR_INVALID_OP_ILLEGAL_ARG_VALUE;
}

}  // namespace

int makeDefinition(ParameterList parameters, PJ_CONTEXT* proj, Definition& definition) {
    if (!isReadable(parameters) || !expandDatum(parameters)) return PROJ_ERR_INVALID_OP_ILLEGAL_ARG_VALUE;
    addDefaultEllipsoid(parameters);
    // PROJ would search its database for a text without a projection.
    if (parameters.get("proj").empty() || !parameters.hasAnyOf(ELLIPSOID_KEYS)) return PROJ_ERR_INVALID_OP_MISSING_ARG;
    const int error = findDatum(parameters, proj, definition);
    if (error != 0) return error;
    definition.isGeocentric = parameters.get("proj") == "geocent";
    definition.isLongLat = isOneOf(LONG_LAT_PROJECTIONS, parameters.get("proj"));
    definition.geoidGrids = parameters.get("geoidgrids");
    definition.step = writeStep(parameters, definition, proj);
    if (isNoOperation(parameters, definition, proj)) definition.step.clear();
    return 0;
}

}  // namespace ClassicProj
