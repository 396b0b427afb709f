#include "tools/projdir/ProjString.h"

#include <cmath>
#include <initializer_list>
#include <map>
#include <utility>
#include <vector>

#include "text/NumericText.h"

namespace ProjDir {

using CoordinateTransformation::readDouble;
using CoordinateTransformation::writeDouble;

namespace {

constexpr double DEGREE_TOLERANCE = 1e-12;
// In metres: larger than the rounding between two forms of one ellipsoid, smaller than anything measurable.
constexpr double SAME_SEMI_AXIS = 1e-6;

// Ellipsoid, datum and axes are written anew; the other keys have no meaning in an init file.
constexpr std::initializer_list<const char*> REPLACED_KEYS = {
    "ellps", "a", "b", "rf", "R", "datum", "towgs84", "nadgrids", "no_defs", "type", "wktext", "axis"};
constexpr std::initializer_list<const char*> UNIT_AND_MERIDIAN_KEYS = {"units", "to_meter", "vunits", "vto_meter",
                                                                       "pm"};

constexpr char WEB_MERCATOR[] = "1024";
constexpr char POLAR_STEREOGRAPHIC_C[] = "9830";

// A parameter of a definition, and the EPSG code of the parameter that has its value, except for a factor.
struct MethodParameter {
    const char* key;
    const char* code;
    double factor = 1;
};

// The methods that PROJ does not write, by EPSG code, with their projections. "+axis" reverses the coordinates after
// the false origin is added, so the false origin changes its sign.
const std::map<std::string, std::pair<const char*, std::vector<MethodParameter>>> METHODS = {
    // Lambert Conic Conformal (West Orientated)
    {"9826",
     {"lcc",
      {{"lat_1", "8801"},
       {"lat_0", "8801"},
       {"lon_0", "8802"},
       {"k_0", "8805"},
       {"x_0", "8806", -1},
       {"y_0", "8807"}}}},
    // Bonne (South Orientated)
    {"9828", {"bonne", {{"lat_1", "8801"}, {"lon_0", "8802"}, {"x_0", "8806", -1}, {"y_0", "8807", -1}}}}};

// PROJ lists "a=6378137.0" with "b=6356752.314" or "rf=298.257".
ReferenceEllipsoid readNamed(const PJ_ELLPS& named) {
    const ParameterList axes(std::string(named.major) + " " + named.ell);
    const double semiMajor = readDouble(axes.get("a"));
    if (axes.has("b")) return {semiMajor, readDouble(axes.get("b"))};
    return {semiMajor, semiMajor * (1 - 1 / readDouble(axes.get("rf")))};
}

bool isSame(const ReferenceEllipsoid& left, const ReferenceEllipsoid& right) {
    return std::fabs(left.semiMajor - right.semiMajor) < SAME_SEMI_AXIS &&
           std::fabs(left.semiMinor - right.semiMinor) < SAME_SEMI_AXIS;
}

ProjPtr<PJ> conversionOf(const ProjContext& context, const PJ* crs) {
    if (proj_get_type(crs) != PJ_TYPE_PROJECTED_CRS) return nullptr;
    return ProjPtr<PJ>(proj_crs_get_coordoperation(context.get(), crs));
}

// The EPSG code of the method; empty for a CRS that is not projected.
std::string methodOf(const ProjContext& context, const PJ* conversion) {
    const char* code = nullptr;
    if (conversion != nullptr) proj_coordoperation_get_method_info(context.get(), conversion, nullptr, nullptr, &code);
    return textOrEmpty(code);
}

// The parameter with an EPSG code, in metres, radians or as a ratio; 0 for one that the conversion does not have.
double readParameter(const ProjContext& context, const PJ* conversion, const char* wanted) {
    const int count = proj_coordoperation_get_param_count(context.get(), conversion);
    for (int i = 0; i < count; ++i) {
        const char* code = nullptr;
        double value = 0;
        double factor = 1;
        proj_coordoperation_get_param(context.get(), conversion, i, nullptr, nullptr, &code, &value, nullptr, &factor,
                                      nullptr, nullptr, nullptr, nullptr);
        if (textOrEmpty(code) == wanted) return value * factor;
    }
    return 0;
}

std::string write(const char* key, double value) { return std::string(" +") + key + "=" + writeDouble(value + 0.0); }

// Without the noise that the conversion of units adds to decimal figures.
double toDegrees(double radians) { return std::round(radians / RADIANS_PER_DEGREE * 1e12) / 1e12 + 0.0; }

// Angles are in degrees.
double readParameter(const ProjContext& context, const PJ* conversion, const MethodParameter& parameter) {
    const double value = readParameter(context, conversion, parameter.code);
    return parameter.factor * (parameter.key[0] == 'l' ? toDegrees(value) : value);
}

// The false origin is on the standard parallel, whose radius on the map is that on the ellipsoid (IOGP Publication
// 373-7-2, Polar Stereographic variant C). "+y_0" counts from the pole.
std::string writePolarStereographicC(const ProjContext& context, const PJ* conversion,
                                     const ReferenceEllipsoid& ellipsoid) {
    const double parallel = readParameter(context, conversion, {"lat_ts", "8832"});
    const Vector point = toGeocentric(ellipsoid, {0, parallel});
    return "+proj=stere" + write("lat_0", parallel < 0 ? -90 : 90) + write("lat_ts", parallel) +
           write("lon_0", readParameter(context, conversion, {"lon_0", "8833"})) +
           write("x_0", readParameter(context, conversion, {"x_0", "8826"})) +
           write("y_0", readParameter(context, conversion, {"y_0", "8827"}) + (parallel < 0 ? -point.x() : point.x()));
}

std::string writeUnitAndMeridian(const ProjContext& context, const PJ* crs) {
    const double metres = readAxis(context, crs).unitLength;
    const ProjPtr<PJ> base = createGeodeticCrs(context, crs);
    const ParameterList geodetic(textOrEmpty(proj_as_proj_string(context.get(), base.get(), PJ_PROJ_4, nullptr)));
    return (metres == 1 ? " +units=m" : " +to_meter=" + writeDouble(metres)) + geodetic.only({"pm"}).toText();
}

std::string exportText(ProjContext& context, const PJ* crs) {
    context.takeMessage();
    const char* const text = proj_as_proj_string(context.get(), crs, PJ_PROJ_4, nullptr);
    if (text != nullptr) return text;
    const std::string message = context.takeMessage();
    if (const auto own = writeMethodText(context, crs)) return *own + writeUnitAndMeridian(context, crs);
    throw NotExpressible("PROJ cannot express it (" + message.substr(message.find(": ") + 2) + ")");
}

void requireDegrees(const ProjContext& context, const PJ* crs) {
    const Axis axis = readAxis(context, crs);
    if (std::fabs(axis.unitLength - RADIANS_PER_DEGREE) > DEGREE_TOLERANCE)
        throw NotExpressible("its angular unit is the " + axis.unit +
                             "; definitions of longitude and latitude are in degrees");
}

bool isWgs84(const PJ* geodeticCrs) {
    if (textOrEmpty(proj_get_id_auth_name(geodeticCrs, 0)) != "EPSG") return false;
    const std::string code = textOrEmpty(proj_get_id_code(geodeticCrs, 0));
    return code == "4326" || code == "4978" || code == "4979";
}

void append(std::string& text, const std::string& part) {
    if (!part.empty()) text += (text.empty() ? "" : " ") + part;
}

double readMeridian(const ProjContext& context, const PJ* geodeticCrs) {
    const ProjPtr<PJ> meridian(proj_get_prime_meridian(context.get(), geodeticCrs));
    double longitude = 0;
    double radians = RADIANS_PER_DEGREE;
    if (meridian != nullptr)
        proj_prime_meridian_get_parameters(context.get(), meridian.get(), &longitude, &radians, nullptr);
    return longitude * radians / RADIANS_PER_DEGREE;
}

Coordinates exchangeIf(bool exchange, Coordinates coordinates) {
    if (exchange) std::swap(coordinates[0], coordinates[1]);
    return coordinates;
}

// Null for a method that PROJ does not implement: PROJ makes operations for these as well.
ProjPtr<PJ> createProjection(const ProjContext& context, const PJ* crs) {
    const ProjPtr<PJ> conversion = conversionOf(context, crs);
    if (conversion != nullptr && proj_as_proj_string(context.get(), conversion.get(), PJ_PROJ_5, nullptr) == nullptr)
        return nullptr;
    const ProjPtr<PJ> geodeticCrs = createGeodeticCrs(context, crs);
    return ProjPtr<PJ>(proj_create_crs_to_crs_from_pj(context.get(), crs, geodeticCrs.get(), nullptr, nullptr));
}

}  // namespace

std::string writeParameters(const ParameterList& parameters) {
    const std::string text = parameters.toText();
    return text.empty() ? text : text.substr(1);
}

bool isWholeDefinition(const std::string& text) {
    return text.find_first_of("<>#") == std::string::npos && toOneLine(text) == text;
}

// Two axes in one direction, at a pole, differ in their names.
bool isNorthAxisFirst(const ProjContext& context, const PJ* crs) {
    const ProjPtr<PJ> normalised(proj_normalize_for_visualization(context.get(), crs));
    return normalised != nullptr && readAxis(context, crs).name != readAxis(context, normalised.get()).name;
}

std::string writeAxisDirections(const ProjContext& context, const PJ* crs) {
    const ProjPtr<PJ> normalised(proj_normalize_for_visualization(context.get(), crs));
    if (normalised == nullptr || proj_get_type(crs) != PJ_TYPE_PROJECTED_CRS) return "";
    const std::string first = readAxis(context, normalised.get(), 0).direction.substr(0, 1);
    const std::string second = readAxis(context, normalised.get(), 1).direction.substr(0, 1);
    return first == second || first + second == "en" ? "" : "+axis=" + first + second + "u";
}

ReferenceEllipsoid readEllipsoid(const ProjContext& context, const PJ* crs) {
    const ProjPtr<PJ> ellipsoid(proj_get_ellipsoid(context.get(), crs));
    ReferenceEllipsoid axes;
    if (ellipsoid != nullptr)
        proj_ellipsoid_get_parameters(context.get(), ellipsoid.get(), &axes.semiMajor, &axes.semiMinor, nullptr,
                                      nullptr);
    return axes;
}

std::string writeEllipsoid(const ReferenceEllipsoid& ellipsoid) {
    for (const PJ_ELLPS* named = proj_list_ellps(); named->id != nullptr; ++named)
        if (isSame(ellipsoid, readNamed(*named))) return std::string("+ellps=") + named->id;
    const auto [semiMajor, semiMinor] = ellipsoid;
    if (semiMajor == semiMinor) return "+R=" + writeDouble(semiMajor);
    const double inverseFlattening = semiMajor / (semiMajor - semiMinor);
    return "+a=" + writeDouble(semiMajor) + " +rf=" + writeDouble(std::round(inverseFlattening * 1e9) / 1e9);
}

std::optional<std::string> writeMethodText(const ProjContext& context, const PJ* crs) {
    const ProjPtr<PJ> conversion = conversionOf(context, crs);
    const std::string code = methodOf(context, conversion.get());
    if (code == POLAR_STEREOGRAPHIC_C)
        return writePolarStereographicC(context, conversion.get(), readEllipsoid(context, crs));
    const auto method = METHODS.find(code);
    if (method == METHODS.end()) return std::nullopt;
    const auto& [projection, parameters] = method->second;
    std::string text = std::string("+proj=") + projection;
    for (const MethodParameter& parameter : parameters)
        text += write(parameter.key, readParameter(context, conversion.get(), parameter));
    return text;
}

std::string ClassicText::write(const std::string& datumShift) const {
    std::string text = projection;
    // A named datum includes its ellipsoid.
    if (datumShift.rfind("+datum=", 0) != 0) append(text, figure);
    append(text, datumShift);
    if (!datumId.empty()) append(text, "+datum_id=" + datumId);
    append(text, unitsAndMeridian);
    append(text, "+no_defs");
    return text;
}

void requireExpressibleKind(CrsKind kind) {
    if (!isHorizontal(kind))
        throw NotExpressible(std::string("a ") + nameOfKind(kind) + " CRS has no classic definition");
}

ProjPtr<PJ> createGeodeticCrs(const ProjContext& context, const PJ* crs) {
    return ProjPtr<PJ>(proj_get_type(crs) == PJ_TYPE_PROJECTED_CRS ? proj_crs_get_geodetic_crs(context.get(), crs)
                                                                   : proj_clone(context.get(), crs));
}

ClassicText writeClassicText(ProjContext& context, const PJ* crs, const RegistryCrs& entry) {
    requireExpressibleKind(entry.kind);
    if (entry.kind == CrsKind::GEOGRAPHIC) requireDegrees(context, crs);
    const ParameterList kept = ParameterList(exportText(context, crs)).without(REPLACED_KEYS);
    ClassicText text;
    text.projection = writeParameters(kept.without(UNIT_AND_MERIDIAN_KEYS));
    // PROJ writes Web Mercator as a Mercator on a sphere, whose datum shift would be wrong.
    if (methodOf(context, conversionOf(context, crs).get()) == WEB_MERCATOR) text.projection = "+proj=webmerc";
    append(text.projection, writeAxisDirections(context, crs));
    text.unitsAndMeridian = writeParameters(kept.only(UNIT_AND_MERIDIAN_KEYS));
    text.ellipsoid = readEllipsoid(context, crs);
    text.figure = writeEllipsoid(text.ellipsoid);
    text.datumId = entry.datum.id;
    text.isWgs84 = isWgs84(createGeodeticCrs(context, crs).get());
    return text;
}

ClassicProjection::ClassicProjection(ProjContext& context, const std::string& definition)
    : projection(proj_create(context.get(), definition.c_str())),
      unit(definition.rfind("+proj=longlat", 0) == 0 ? RADIANS_PER_DEGREE : 1) {
    if (projection == nullptr) throw NotExpressible("PROJ cannot make its definition: " + context.takeMessage());
}

LonLat ClassicProjection::toGeodetic(const Coordinates& coordinates) const {
    const auto& [x, y, z] = coordinates;
    const Coordinates radians = transform(projection, PJ_INV, {x * unit, y * unit, z});
    return {radians[0] / RADIANS_PER_DEGREE, radians[1] / RADIANS_PER_DEGREE};
}

Coordinates ClassicProjection::fromGeodetic(const LonLat& place) const {
    const auto [x, y, z] =
        transform(projection, PJ_FWD, {place.longitude * RADIANS_PER_DEGREE, place.latitude * RADIANS_PER_DEGREE, 0});
    return {x / unit, y / unit, z};
}

GeodeticAxes::GeodeticAxes(const ProjContext& context, const PJ* geodeticCrs)
    : isGeocentric(proj_get_type(geodeticCrs) == PJ_TYPE_GEOCENTRIC_CRS),
      isLatitudeFirst(isNorthAxisFirst(context, geodeticCrs)),
      degreesPerUnit(isGeocentric ? 1 : readAxis(context, geodeticCrs).unitLength / RADIANS_PER_DEGREE),
      meridian(readMeridian(context, geodeticCrs)),
      ellipsoid(readEllipsoid(context, geodeticCrs)) {}

Coordinates GeodeticAxes::write(const LonLat& place) const {
    if (isGeocentric) {
        const Vector point = toGeocentric(ellipsoid, place);
        return {point.x(), point.y(), point.z()};
    }
    const double longitude = (place.longitude - meridian) / degreesPerUnit;
    return exchangeIf(isLatitudeFirst, {longitude, place.latitude / degreesPerUnit, 0});
}

LonLat GeodeticAxes::read(const Coordinates& coordinates) const {
    const auto [longitude, latitude, height] = exchangeIf(isLatitudeFirst, coordinates);
    return {longitude * degreesPerUnit + meridian, latitude * degreesPerUnit};
}

RegistryProjection::RegistryProjection(ProjContext& context, const PJ* crs, const std::string& definition,
                                       bool isNorthFirst)
    : axes(context, createGeodeticCrs(context, crs).get()),
      operation(createProjection(context, crs)),
      northFirst(isNorthFirst) {
    if (operation == nullptr) classic = std::make_unique<ClassicProjection>(context, definition);
}

Coordinates RegistryProjection::fromGeodetic(const LonLat& place) const {
    if (classic != nullptr) return exchangeIf(northFirst, classic->fromGeodetic(place));
    return transform(operation, PJ_INV, axes.write(place));
}

LonLat RegistryProjection::toGeodetic(const Coordinates& coordinates) const {
    if (classic != nullptr) return classic->toGeodetic(exchangeIf(northFirst, coordinates));
    return axes.read(transform(operation, PJ_FWD, coordinates));
}

}  // namespace ProjDir
