#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ogrsf_frmts.h>
#include <regex>

#include <fmt/format.h>

#include "Service.h"

namespace FeatureServer {
namespace {

struct PointVisitor : OGRDefaultGeometryVisitor {
    explicit PointVisitor(std::function<void(OGRPoint&)> chosen) : use(std::move(chosen)) {}
    using OGRDefaultGeometryVisitor::visit;
    void visit(OGRPoint* point) override { use(*point); }

    std::function<void(OGRPoint&)> use;
};

// Transforms the points of a geometry by one call, and rounds them to multiples of 1 / `scale` unless that is 0.
// Returns false if one of them cannot be transformed.
bool transform(OGRGeometry& geometry, PointTransformer& transformer, double scale = 0) {
    std::vector<double> points;
    PointVisitor collect([&](const OGRPoint& point) {
        points.insert(points.end(), {point.getX(), point.getY(), point.getZ()});
    });
    geometry.accept(&collect);
    double* next = points.data();
    if (transformer.transform(points.size() / 3, next, next + 1, geometry.Is3D() != FALSE ? next + 2 : nullptr, 3) > 0)
        return false;
    PointVisitor replace([&](OGRPoint& point) {
        for (int i = 0; scale > 0 && i < 3; ++i) next[i] = std::round(next[i] * scale) / scale + 0.0;
        point.setX(next[0]);
        point.setY(next[1]);
        if (point.Is3D() != FALSE) point.setZ(next[2]);
        next += 3;
    });
    geometry.accept(&replace);
    return true;
}

// The numbers, and the name of the CRS or nothing.
std::pair<Bounds, std::string> parseBox(const std::string& text) {
    static const std::string NUMBER = R"(([-+]?(?:\d+\.?\d*|\.\d+)(?:[eE][-+]?\d+)?))", PAIR = NUMBER + "," + NUMBER;
    static const std::regex FLAT(PAIR + "," + PAIR + "(?:,(.*))?");
    static const std::regex SOLID(PAIR + "," + NUMBER + "," + PAIR + "," + NUMBER + "(?:,(.*))?");
    std::smatch parts;
    const bool isSolid = std::regex_match(text, parts, SOLID);
    if (!isSolid && !std::regex_match(text, parts, FLAT))
        throw invalid("bbox", "A box has four or six numbers, not " + text);
    const auto number = [&](std::size_t i) { return std::strtod(parts[i].str().c_str(), nullptr); };
    const std::size_t upper = isSolid ? 4 : 3;
    return {{number(1), number(2), number(upper), number(upper + 1)}, parts[isSolid ? 7 : 5]};
}

// Whether two ranges of an axis overlap. Longitudes across the antimeridian have min > max in the first.
bool overlap(double min, double max, double otherMin, double otherMax) {
    if (min > max) return otherMax >= min || otherMin <= max;
    return otherMin <= max && otherMax >= min;
}

// Finds the features that intersect a box: those that intersect its image in the CRS of the layer, less those whose own
// image lies outside the box.
class BoxFilter {
public:
    BoxFilter(const Bounds& box, const Crs& crs, const Crs& stored)
        : search(PointTransformer(*crs.get(), *stored.get()).transformBounds(box)),
          bounds(box),
          toBox(*stored.get(), *crs.get()) {
        // A source cannot be searched across the antimeridian, so it is searched at all longitudes.
        if (search.minX > search.maxX) search = {-1e3, search.minY, 1e3, search.maxY};
    }

    bool touches(const OGRGeometry& geometry) {
        const OGRGeometryUniquePtr image(geometry.clone());
        if (!transform(*image, toBox)) return false;
        OGREnvelope own;
        image->getEnvelope(&own);
        return overlap(bounds.minX, bounds.maxX, own.MinX, own.MaxX) &&
               overlap(bounds.minY, bounds.maxY, own.MinY, own.MaxY);
    }

    Bounds search;

private:
    Bounds bounds;
    PointTransformer toBox;
};

std::optional<BoxFilter> makeFilter(const Offer& offer, const Query& query, const Crs& stored) {
    const bool isApi = query.protocol == Protocol::API;
    const auto [bounds, name] = parseBox(query.box.empty() ? "0,0,0,0" : query.box);
    if (isApi && !name.empty()) throw invalid("bbox", "A box has numbers only");
    const Crs crs = offer.named(query.protocol, name.empty() ? query.boxCrsName : name, isApi ? "bbox-crs" : "bbox");
    if (query.box.empty()) return {};
    try {
        return BoxFilter(bounds, crs, stored);
    } catch (const TransformationException&) {
        throw invalid("bbox", currentFailure());
    }
}

// How an answer writes coordinates.
struct Target {
    PointTransformer transformer;
    std::size_t dimension;
    std::string srsName;
    double scale;
};

// The name and the dimension are attributes of the outermost element.
std::string gmlOf(const OGRGeometry& geometry, Format format, const std::string& srsName, const std::string& id) {
    CPLStringList options;
    options.SetNameValue("FORMAT", format == Format::GML_3_2 ? "GML32" : "GML3");
    options.SetNameValue("SRSDIMENSION_LOC", "GEOMETRY");
    if (format == Format::GML_3_2) options.SetNameValue("GMLID", id.c_str());
    std::string text = taken(geometry.exportToGML(options.List()));
    return text.insert(text.find_first_of(" >"), " srsName=\"" + xml(srsName) + "\"");
}

std::string gmlOf(const OGRFeature& feature, const Layer& layer, Format format, const std::string& srsName) {
    const std::string id = fmt::format("{}.{}", layer.name, feature.GetFID());
    const OGRGeometry* const geometry = feature.GetGeometryRef();
    std::string properties;
    if (geometry != nullptr)
        properties =
            fmt::format("<fs:{0}>{1}</fs:{0}>", layer.geometryName, gmlOf(*geometry, format, srsName, id + ".0"));
    for (const Field& field : layer.fields)
        if (feature.IsFieldSetAndNotNull(field.index))
            properties += fmt::format("<fs:{0}>{1}</fs:{0}>", field.name, xml(feature.GetFieldAsString(field.index)));
    return fmt::format("<{0}><fs:{1} gml:id=\"{2}\">{3}</fs:{1}></{0}>\n",
                       format == Format::GML_3_2 ? "wfs:member" : "gml:featureMember", layer.name, id, properties);
}

std::string jsonOf(const OGRFeature& feature, const Field& field) {
    if (!feature.IsFieldSetAndNotNull(field.index)) return "null";
    const std::string value = feature.GetFieldAsString(field.index);
    if (field.schemaType == "xsd:string") return json(value);
    // A number that is not finite has no form in JSON.
    return std::isfinite(feature.GetFieldAsDouble(field.index)) ? value : "null";
}

std::string jsonOf(OGRFeature& feature, const Layer& layer) {
    OGRGeometry* const geometry = feature.GetGeometryRef();
    const std::string shape = geometry != nullptr ? taken(geometry->exportToJson()) : "null";
    std::string properties;
    for (const Field& field : layer.fields)
        properties += fmt::format(R"({}"{}":{})", properties.empty() ? "" : ",", field.name, jsonOf(feature, field));
    return fmt::format(R"({{"type":"Feature","id":{},"geometry":{},"properties":{{{}}}}})", feature.GetFID(), shape,
                       properties);
}

std::string textOf(OGRFeature& feature, const Query& query, Target& target) {
    OGRGeometry* const geometry = feature.GetGeometryRef();
    if (geometry != nullptr && !transform(*geometry, target.transformer, target.scale))
        throw TransExecException("A feature of " + query.layer.name + " cannot be transformed to " + target.srsName);
    if (geometry != nullptr) geometry->assignSpatialReference(nullptr);  // GDAL would write its name and order
    if (geometry != nullptr && target.dimension == 2) geometry->flattenTo2D();
    return query.format == Format::GEOJSON ? jsonOf(feature, query.layer)
                                           : gmlOf(feature, query.layer, query.format, target.srsName);
}

// Reads the features of a query, and writes those between its offset and its limit.
void select(const Store& store, const Query& query, std::optional<BoxFilter>& filter, Target& target, Result& result) {
    const std::size_t enough = query.isCount ? SIZE_MAX : query.limit + std::min(query.offset, SIZE_MAX - query.limit);
    std::size_t found = 0;
    const char* const separator = query.format == Format::GEOJSON ? ",\n" : "";
    const auto use = [&](OGRFeature& feature) {
        const OGRGeometry* const geometry = feature.GetGeometryRef();
        if (filter && (geometry == nullptr || !filter->touches(*geometry))) return true;
        result.more = found == enough;
        if (result.more || found++ < query.offset || query.isCount) return !result.more;
        result.text += (result.text.empty() ? "" : separator) + textOf(feature, query, target);
        ++result.written;
        return true;
    };
    store.read(query.layer, filter ? &filter->search : nullptr, query.id ? &*query.id : nullptr, use);
    if (!result.more) result.matched = found;
}

}  // namespace

Result find(const Offer& offer, const Store& store, const Query& query) {
    const Crs stored = offer.stored(query.layer.crsCode);
    const Crs crs = offer.named(query.protocol, query.crsName, query.protocol == Protocol::API ? "crs" : "srsName");
    const std::string name = Offer::nameLike(query.crsName, crs);
    Crs target = offer.written(query.protocol, name, crs, query.layer.dimension);
    // The header of the API has a URL, also for a CRS that the request named in another form.
    Result result{{}, Offer::nameLike(query.crsName, target), name.rfind("http:", 0) == 0 ? name : Offer::urlOf(crs)};
    // GeoJSON of WFS has the easting or longitude first in every CRS.
    if (query.protocol == Protocol::WFS && query.format == Format::GEOJSON) target.forceWmsAxisOrder();
    std::optional<BoxFilter> filter = makeFilter(offer, query, stored);
    const int places = offer.decimalPlaces(target);
    Target written{
        {*stored.get(), *target.get()}, target->getDim(), result.srsName, places < 0 ? 0 : std::pow(10, places)};
    if (!query.isCount || filter) select(store, query, filter, written, result);
    if (!filter && !query.id) result.matched = store.count(query.layer);
    return result;
}

}  // namespace FeatureServer
