#include "tools/projdir/ClassicText.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

#include "text/NumericText.h"
#include "text/ParameterList.h"
#include "tools/projdir/AxisOrder.h"
#include "tools/projdir/EllipsoidText.h"
#include "tools/projdir/MethodText.h"

namespace ProjDir {

using CoordinateTransformation::ParameterList;
using CoordinateTransformation::writeDouble;

namespace {

constexpr char WEB_MERCATOR_METHOD[] = "1024";
constexpr double DEGREE_TOLERANCE = 1e-12;

// Figure, datum and axes are written anew; the rest has no meaning in an init file.
constexpr std::initializer_list<const char*> REPLACED_KEYS = {
    "ellps", "a", "b", "rf", "R", "datum", "towgs84", "nadgrids", "no_defs", "type", "wktext", "axis"};
constexpr std::initializer_list<const char*> UNIT_AND_MERIDIAN_KEYS = {"units", "to_meter", "vunits", "vto_meter",
                                                                       "pm"};

bool isOneOf(const std::string& word, std::initializer_list<const char*> words) {
    return std::any_of(words.begin(), words.end(), [&word](const char* one) { return word == one; });
}

void append(std::string& text, const std::string& part) {
    if (!part.empty()) text += (text.empty() ? "" : " ") + part;
}

// Without the blank in front.
std::string textOf(const ParameterList& parameters) {
    const std::string text = parameters.toText();
    return text.empty() ? text : text.substr(1);
}

// PROJ writes Pseudo-Mercator as a Mercator on a sphere, whose datum step would go astray.
bool isWebMercator(const ProjContext& context, const PJ* crs) { return methodOf(context, crs) == WEB_MERCATOR_METHOD; }

std::string writeUnitAndMeridian(const ProjContext& context, const PJ* crs) {
    const ProjPtr<PJ> axes(proj_crs_get_coordinate_system(context.get(), crs));
    double metres = 1;
    proj_cs_get_axis_info(context.get(), axes.get(), 0, nullptr, nullptr, nullptr, &metres, nullptr, nullptr, nullptr);
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
    const ProjPtr<PJ> axes(proj_crs_get_coordinate_system(context.get(), crs));
    double factor = 0;
    const char* unit = nullptr;
    proj_cs_get_axis_info(context.get(), axes.get(), 0, nullptr, nullptr, nullptr, &factor, &unit, nullptr, nullptr);
    if (std::fabs(factor - RADIANS_PER_DEGREE) > DEGREE_TOLERANCE)
        throw NotExpressible("its angular unit is the " + textOrEmpty(unit) +
                             "; definitions of longitude and latitude know only degrees");
}

bool isWgs84(const PJ* geodeticCrs) {
    return isOneOf(
        textOrEmpty(proj_get_id_auth_name(geodeticCrs, 0)) + ":" + textOrEmpty(proj_get_id_code(geodeticCrs, 0)),
        {"EPSG:4326", "EPSG:4978", "EPSG:4979"});
}

void divideParameters(const std::string& exported, ClassicText& text) {
    const ParameterList kept = ParameterList(exported).without(REPLACED_KEYS);
    text.projection = textOf(kept.without(UNIT_AND_MERIDIAN_KEYS));
    text.unitsAndMeridian = textOf(kept.only(UNIT_AND_MERIDIAN_KEYS));
}

bool isLongLat(const std::string& definition) { return definition.rfind("+proj=longlat", 0) == 0; }

}  // namespace

void requireExpressibleKind(CrsKind kind) {
    if (kind == CrsKind::GEOGRAPHIC || kind == CrsKind::GEOCENTRIC || kind == CrsKind::PROJECTED) return;
    throw NotExpressible(std::string("a ") + nameOfKind(kind) + " CRS has no classic definition");
}

std::string ClassicText::write(const std::string& datumShift) const {
    std::string text = projection;
    // A named datum brings its ellipsoid along.
    if (datumShift.rfind("+datum=", 0) != 0) append(text, figure);
    append(text, datumShift);
    if (!datumId.empty()) append(text, "+datum_id=" + datumId);
    append(text, unitsAndMeridian);
    append(text, "+no_defs");
    return text;
}

ProjPtr<PJ> createGeodeticCrs(const ProjContext& context, const PJ* crs) {
    return ProjPtr<PJ>(proj_get_type(crs) == PJ_TYPE_PROJECTED_CRS ? proj_crs_get_geodetic_crs(context.get(), crs)
                                                                   : proj_clone(context.get(), crs));
}

ClassicText writeClassicText(ProjContext& context, const PJ* crs, const RegistryCrs& entry) {
    requireExpressibleKind(entry.kind);
    if (entry.kind == CrsKind::GEOGRAPHIC) requireDegrees(context, crs);
    ClassicText text;
    divideParameters(exportText(context, crs), text);
    if (isWebMercator(context, crs)) text.projection = "+proj=webmerc";
    append(text.projection, writeAxisDirections(context, crs));
    text.ellipsoid = readEllipsoid(context, crs);
    text.figure = writeEllipsoid(text.ellipsoid);
    text.datumId = entry.datum.id;
    text.isWgs84 = isWgs84(createGeodeticCrs(context, crs).get());
    return text;
}

ClassicProjection::ClassicProjection(ProjContext& context, const std::string& definition)
    : projection(proj_create(context.get(), definition.c_str())), unit(isLongLat(definition) ? RADIANS_PER_DEGREE : 1) {
    if (projection == nullptr) throw NotExpressible("PROJ cannot make its definition: " + context.takeMessage());
}

LonLat ClassicProjection::toGeodetic(const Coordinates& coordinates) const {
    const PJ_COORD moved = proj_trans(
        projection.get(), PJ_INV, proj_coord(coordinates[0] * unit, coordinates[1] * unit, coordinates[2], HUGE_VAL));
    return {moved.lp.lam / RADIANS_PER_DEGREE, moved.lp.phi / RADIANS_PER_DEGREE};
}

Coordinates ClassicProjection::fromGeodetic(const LonLat& place) const {
    const PJ_COORD moved =
        proj_trans(projection.get(), PJ_FWD,
                   proj_coord(place.longitude * RADIANS_PER_DEGREE, place.latitude * RADIANS_PER_DEGREE, 0, HUGE_VAL));
    return {moved.xyz.x / unit, moved.xyz.y / unit, moved.xyz.z};
}

}  // namespace ProjDir
