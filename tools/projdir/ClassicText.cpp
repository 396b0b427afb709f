#include "tools/projdir/ClassicText.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

#include "tools/projdir/AxisOrder.h"
#include "tools/projdir/EllipsoidText.h"
#include "tools/projdir/PipelineText.h"

namespace ProjDir {

namespace {

constexpr char WEB_MERCATOR_METHOD[] = "1024";
constexpr double DEGREE_TOLERANCE = 1e-12;

bool isOneOf(const std::string& word, std::initializer_list<const char*> words) {
    return std::any_of(words.begin(), words.end(), [&word](const char* one) { return word == one; });
}

void append(std::string& text, const std::string& part) {
    if (!part.empty()) text += (text.empty() ? "" : " ") + part;
}

std::string writeParameter(const std::pair<std::string, std::string>& parameter) {
    return "+" + parameter.first + (parameter.second.empty() ? "" : "=" + parameter.second);
}

// Figure, datum and axes are written anew; the rest has no meaning in an init file.
bool isReplaced(const std::string& key) {
    return isOneOf(key,
                   {"ellps", "a", "b", "rf", "R", "datum", "towgs84", "nadgrids", "no_defs", "type", "wktext", "axis"});
}

bool isUnitOrMeridian(const std::string& key) {
    return isOneOf(key, {"units", "to_meter", "vunits", "vto_meter", "pm"});
}

// PROJ writes Pseudo-Mercator as a Mercator on a sphere, whose datum step would go astray.
bool isWebMercator(const ProjContext& context, const PJ* crs) {
    if (proj_get_type(crs) != PJ_TYPE_PROJECTED_CRS) return false;
    const PjPtr conversion(proj_crs_get_coordoperation(context.get(), crs));
    const char* code = nullptr;
    proj_coordoperation_get_method_info(context.get(), conversion.get(), nullptr, nullptr, &code);
    return textOrEmpty(code) == WEB_MERCATOR_METHOD;
}

std::string exportText(ProjContext& context, const PJ* crs) {
    context.takeMessage();
    const char* const text = proj_as_proj_string(context.get(), crs, PJ_PROJ_4, nullptr);
    if (text != nullptr) return text;
    const std::string message = context.takeMessage();
    throw NotExpressible("PROJ cannot express it (" + message.substr(message.find(": ") + 2) + ")");
}

void requireDegrees(const ProjContext& context, const PJ* crs) {
    const PjPtr axes(proj_crs_get_coordinate_system(context.get(), crs));
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

void requireKind(CrsKind kind) {
    if (kind == CrsKind::GEOGRAPHIC || kind == CrsKind::GEOCENTRIC || kind == CrsKind::PROJECTED) return;
    throw NotExpressible(std::string("a ") + nameOfKind(kind) + " CRS has no classic definition");
}

void sortParameters(const std::string& exported, ClassicText& text) {
    for (const auto& parameter : parseParameters(exported)) {
        if (isReplaced(parameter.first)) continue;
        append(isUnitOrMeridian(parameter.first) ? text.unitsAndMeridian : text.projection, writeParameter(parameter));
    }
}

bool isLongLat(const std::string& definition) { return definition.rfind("+proj=longlat", 0) == 0; }

}  // namespace

std::string ClassicText::write(const std::string& datumShift) const {
    std::string text = projection;
    // A named datum brings its ellipsoid along.
    if (datumShift.rfind("+datum=", 0) != 0) append(text, figure);
    append(text, datumShift);
    append(text, unitsAndMeridian);
    append(text, "+no_defs");
    return text;
}

PjPtr openGeodeticCrs(const ProjContext& context, const PJ* crs) {
    return PjPtr(proj_get_type(crs) == PJ_TYPE_PROJECTED_CRS ? proj_crs_get_geodetic_crs(context.get(), crs)
                                                             : proj_clone(context.get(), crs));
}

ClassicText writeClassicText(ProjContext& context, const PJ* crs, const RegistryCrs& entry) {
    requireKind(entry.kind);
    if (entry.kind == CrsKind::GEOGRAPHIC) requireDegrees(context, crs);
    ClassicText text;
    sortParameters(exportText(context, crs), text);
    if (isWebMercator(context, crs)) text.projection = "+proj=webmerc";
    append(text.projection, writeAxisDirections(context, crs));
    text.ellipsoid = readEllipsoid(context, crs);
    text.figure = writeEllipsoid(text.ellipsoid);
    text.isWgs84 = isWgs84(openGeodeticCrs(context, crs).get());
    return text;
}

ClassicInverse::ClassicInverse(ProjContext& context, const std::string& definition)
    : projection(proj_create(context.get(), definition.c_str())), unit(isLongLat(definition) ? RADIANS_PER_DEGREE : 1) {
    if (projection == nullptr) throw NotExpressible("PROJ cannot make its definition: " + context.takeMessage());
}

LonLat ClassicInverse::operator()(const Coordinates& coordinates) const {
    const PJ_COORD moved = proj_trans(
        projection.get(), PJ_INV, proj_coord(coordinates[0] * unit, coordinates[1] * unit, coordinates[2], HUGE_VAL));
    return {moved.lp.lam / RADIANS_PER_DEGREE, moved.lp.phi / RADIANS_PER_DEGREE};
}

}  // namespace ProjDir
