#include <iterator>
#include <ogrsf_frmts.h>

#include <fmt/compile.h>
#include <fmt/format.h>

#include "Features.h"
#include "QSHelpers/NumericText.h"

namespace FeatureServer {
namespace {

// How a geometry is written: between `open` and `close`, with each part between `openPart` and `closePart`, and
// `separator` between the parts. A part is a vertex of a point, line or ring, a ring of a polygon, or a geometry.
struct Notation {
    const char *name, *open, *close, *openPart, *closePart, *separator;
};

// In the order of OGRwkbGeometryType, and then the outer and an inner ring of a polygon.
constexpr std::size_t OUTER_RING = 7, INNER_RING = 8;
constexpr Notation GML[] = {
    {"", "", "", "", "", ""},
    {"Point", "<gml:pos>", "</gml:pos>", "", "", ""},
    {"LineString", "<gml:posList>", "</gml:posList>", "", "", " "},
    {"Polygon", "", "", "", "", ""},
    {"MultiPoint", "", "", "<gml:pointMember>", "</gml:pointMember>", ""},
    {"MultiCurve", "", "", "<gml:curveMember>", "</gml:curveMember>", ""},
    {"MultiSurface", "", "", "<gml:surfaceMember>", "</gml:surfaceMember>", ""},
    {"", "<gml:exterior><gml:LinearRing><gml:posList>", "</gml:posList></gml:LinearRing></gml:exterior>", "", "", " "},
    {"", "<gml:interior><gml:LinearRing><gml:posList>", "</gml:posList></gml:LinearRing></gml:interior>", "", "", " "}};
constexpr Notation JSON[] = {{"", "", "", "", "", ""},
                             {"Point", "[", "]", "", "", ""},
                             {"LineString", "[", "]", "[", "]", ","},
                             {"Polygon", "[", "]", "", "", ","},
                             {"MultiPoint", "[", "]", "", "", ","},
                             {"MultiLineString", "[", "]", "", "", ","},
                             {"MultiPolygon", "[", "]", "", "", ","},
                             {"", "[", "]", "[", "]", ","},
                             {"", "[", "]", "[", "]", ","}};

std::size_t typeOf(const OGRGeometry& geometry) { return wkbFlatten(geometry.getGeometryType()); }

int countParts(const OGRGeometry& geometry, std::size_t type) {
    if (type == wkbPoint) return 1;
    if (type == wkbPolygon) return 1 + geometry.toPolygon()->getNumInteriorRings();
    const bool isLine = type == wkbLineString || type >= OUTER_RING;
    return isLine ? geometry.toLineString()->getNumPoints() : geometry.toGeometryCollection()->getNumGeometries();
}

template <typename... Arguments>
void add(std::string& text, fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    fmt::format_to(std::back_inserter(text), format, std::forward<Arguments>(arguments)...);
}

}  // namespace

FeatureWriter::FeatureWriter(Format how, const Layer& which, const std::string& srsName, std::size_t dimensions,
                             int places)
    : format(how),
      isJson(how == Format::GEOJSON || how == Format::GEOJSON_TEXT_IDS),
      layer(which),
      srs(fmt::format(" srsName=\"{}\" srsDimension=\"{}\"", xml(srsName), dimensions)),
      dimension(dimensions),
      decimalPlaces(places) {}

void FeatureWriter::write(const Chunk& chunk, const Chunk::Entry& entry) {
    const OGRGeometry* const geometry = entry.begin == entry.end ? nullptr : entry.feature->GetGeometryRef();
    next = chunk.ordinates.data() + entry.begin;
    stride = chunk.dimension;
    parts = 0;
    id = std::to_string(entry.feature->GetFID());
    if (format != Format::GEOJSON) id = layer.name + "." + id;
    isJson ? writeJson(*entry.feature, geometry) : writeGml(*entry.feature, geometry);
}

void FeatureWriter::writeGml(const OGRFeature& feature, const OGRGeometry* geometry) {
    const char* const member = format == Format::GML_3_2 ? "wfs:member" : "gml:featureMember";
    add(text, "<{}><fs:{} gml:id=\"{}\">", member, layer.name, id);
    if (geometry != nullptr) {
        add(text, "<fs:{}>", layer.geometryName);
        writeGeometry(*geometry, typeOf(*geometry), true);
        add(text, "</fs:{}>", layer.geometryName);
    }
    for (std::size_t i = 0; i < layer.fields.size(); ++i) {
        const int field = static_cast<int>(i);
        if (feature.IsFieldSetAndNotNull(field))
            add(text, "<fs:{0}>{1}</fs:{0}>", layer.fields[i].name, xml(feature.GetFieldAsString(field)));
    }
    add(text, "</fs:{}></{}>\n", layer.name, member);
}

void FeatureWriter::writeJson(const OGRFeature& feature, const OGRGeometry* geometry) {
    add(text, R"({}{{"type":"Feature","id":{},"geometry":)", text.empty() ? "" : ",\n",
        format == Format::GEOJSON ? id : json(id));
    if (geometry != nullptr) {
        add(text, R"({{"type":"{}","coordinates":)", JSON[typeOf(*geometry)].name);
        writeGeometry(*geometry, typeOf(*geometry), true);
    }
    text += geometry != nullptr ? R"(},"properties":{)" : R"(null,"properties":{)";
    for (std::size_t i = 0; i < layer.fields.size(); ++i) {
        const int field = static_cast<int>(i);
        const bool isNull = feature.IsFieldSetAndNotNull(field) == 0;
        const std::string value = isNull ? "null" : feature.GetFieldAsString(field);
        // A number that is not finite has no form in JSON.
        const bool isFinite = value.find_first_not_of("+-.0123456789eE") == std::string::npos;
        add(text, R"({}"{}":{})", i > 0 ? "," : "", layer.fields[i].name,
            isNull || (layer.fields[i].isNumber && !isFinite) ? "null"
                                                              : (layer.fields[i].isNumber ? value : json(value)));
    }
    text += "}}";
}

void FeatureWriter::writeGeometry(const OGRGeometry& geometry, std::size_t type, bool isWhole) {
    const Notation& notation = (isJson ? JSON : GML)[type];
    const bool isElement = !isJson && type < OUTER_RING;
    if (isElement) add(text, "<gml:{}{}", notation.name, isWhole ? srs : "");
    if (isElement && format == Format::GML_3_2) add(text, " gml:id=\"{}.{}\"", id, parts++);
    if (isElement) text += '>';
    text += notation.open;
    const int count = countParts(geometry, type);
    for (int i = 0; i < count; ++i) {
        if (i > 0) text += notation.separator;
        text += notation.openPart;
        if (type == wkbPolygon)
            writeGeometry(
                i == 0 ? *geometry.toPolygon()->getExteriorRing() : *geometry.toPolygon()->getInteriorRing(i - 1),
                i == 0 ? OUTER_RING : INNER_RING, false);
        else if (type > wkbPolygon && type < OUTER_RING)
            writeGeometry(*geometry.toGeometryCollection()->getGeometryRef(i), type - wkbPolygon, false);
        else
            writeVertex();
        text += notation.closePart;
    }
    text += notation.close;
    if (isElement) add(text, "</gml:{}>", notation.name);
}

void FeatureWriter::writeVertex() {
    for (std::size_t i = 0; i < dimension; ++i) {
        if (i > 0) text += isJson ? ',' : ' ';
        if (decimalPlaces < 0)
            text += QSHelpers::convertNumericToText(next[i], decimalPlaces, false);
        else
            fmt::format_to(std::back_inserter(text), FMT_COMPILE("{:.{}f}"), next[i], decimalPlaces);
    }
    next += stride;
}

std::string xml(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (std::string_view("&<>\"").find(c) != std::string_view::npos)
            add(escaped, "&#{};", static_cast<int>(c));
        else  // XML 1.0 has no other control characters
            escaped += static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\n' ? '?' : c;
    }
    return escaped;
}

std::string json(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\' || static_cast<unsigned char>(c) < ' ')
            add(quoted, "\\u{:04x}", static_cast<unsigned int>(static_cast<unsigned char>(c)));
        else
            quoted += c;
    }
    return quoted + '"';
}

}  // namespace FeatureServer
