#include <algorithm>
#include <chrono>
#include <sstream>

#include <fmt/chrono.h>
#include <pugixml.hpp>

#include "Service.h"

namespace FeatureServer {
namespace {

struct Version {
    const char* number;
    Format gml;
    const char* gmlType;
    const char* gmlNumber;
    const char* countParameter;

    std::string fill(const Context& context, const std::string& name, const Values& values) const {
        return context.fill(number + (" " + name), values);
    }
};

constexpr Version NEWER{"2.0.0", Format::GML_3_2, "application/gml+xml; version=3.2", "3.2", "count"};
constexpr Version OLDER{"1.1.0", Format::GML_3_1, "text/xml; subtype=gml/3.1.1", "3.1.1", "maxFeatures"};

Refusal missing(const std::string& parameter) { return {"MissingParameterValue", parameter, "It is missing"}; }
Refusal unsupported(const std::string& parameter, const std::string& text) {
    return {"OptionNotSupported", parameter, text, 501};
}

// Without a version GetCapabilities is answered in the newest one, or in the first of AcceptVersions that is known.
const Version& versionOf(const Request& request) {
    const bool isNegotiable = lower(request.value("request")) == "getcapabilities";
    const std::string number = request.value("version", isNegotiable ? request.value("acceptVersions", "2.0.0") : "");
    const auto newer = number.find("2.0."), older = number.find("1.1.");
    if (number.empty()) throw missing("version");
    if (newer == older && !isNegotiable) throw invalid("version", "The versions are 2.0.0 and 1.1.0");
    return older < newer ? OLDER : NEWER;
}

std::string typeEntry(const Context& context, const Version& version, const Layer& layer) {
    const std::string stored = Offer::urnOf(context.offer.stored(layer.crsCode));
    std::string otherCrs;
    for (const auto& [urn, url, eastFirst, description] : context.offer.listed())
        if (!urn.empty() && urn != stored)
            otherCrs += version.fill(context, "otherCrs",
                                     {{"urn", urn}, {"title", xml(description.name)}, {"area", xml(description.area)}});
    return version.fill(
        context, "type",
        withBox(context.offer.geographicBox(layer.crsCode, layer.extent),
                {{"name", layer.name}, {"title", xml(layer.title)}, {"storedCrs", stored}, {"otherCrs", otherCrs}}));
}

Answer capabilities(const Context& context, const Version& version, const Request& request) {
    std::string types;
    for (const Layer& layer : context.store.layers()) types += typeEntry(context, version, layer);
    const Values values{
        {"base", request.base}, {"types", types}, {"mostFeatures", std::to_string(context.mostFeatures)}};
    return {200, "text/xml", version.fill(context, "capabilities", values)};
}

// Both versions call the parameter by either name. A prefix may be missing.
std::string typeNames(const Request& request) { return request.value("typeNames", request.value("typeName")); }

const Layer& layerNamed(const Context& context, const std::string& name) {
    if (name.empty()) throw missing("typeNames");
    const Layer* const layer = context.store.find(name.substr(name.find(':') + 1));
    if (layer == nullptr) throw invalid("typeNames", "There is no feature type " + name);
    return *layer;
}

std::string typeSchema(const Context& context, const Version& version, const Layer& layer) {
    std::string properties =
        version.fill(context, "property", {{"name", layer.geometryName}, {"type", layer.geometryType}});
    for (const Field& field : layer.fields)
        properties += version.fill(context, "property", {{"name", field.name}, {"type", field.schemaType}});
    return version.fill(context, "schemaType", {{"name", layer.name}, {"properties", properties}});
}

Answer schema(const Context& context, const Version& version, const Request& request) {
    std::string types, name;
    std::istringstream names(typeNames(request));
    while (std::getline(names, name, ',')) types += typeSchema(context, version, layerNamed(context, name));
    if (types.empty())
        for (const Layer& layer : context.store.layers()) types += typeSchema(context, version, layer);
    return {200, version.gmlType, version.fill(context, "schema", {{"types", types}})};
}

// The text of a bbox parameter for a filter that is nothing but a box.
std::string boxOfFilter(const std::string& filter) {
    pugi::xml_document document;
    document.load_string(filter.c_str());
    const pugi::xml_node box =
        document.select_node("/*[local-name()='Filter' and count(*)=1]/*[local-name()='BBOX']/*[last()]").node();
    if (!box) throw unsupported("filter", "A filter can only be a box");
    std::string text;
    for (const pugi::xpath_node& corner : box.select_nodes(".//text()"))
        text += corner.node().value() + std::string(",");
    std::replace(text.begin(), text.end(), ' ', ',');
    return text + box.attribute("srsName").value();
}

bool wantsJson(const Version& version, const Request& request) {
    const std::string format = request.value("outputFormat", version.gmlType);
    if (format.find("json") != std::string::npos) return true;
    if (format.find(version.gmlNumber) != std::string::npos) return false;
    throw invalid("outputFormat", "There is no format " + format);
}

// A box that names no CRS is in longitudes and latitudes in WFS 1.1, and in the CRS of the layer in WFS 2.0. In a
// filter it is in the CRS of the answer, as GDAL writes it.
Query queryOf(const Context& context, const Version& version, const Request& request) {
    for (const char* name : {"sortBy", "storedQuery_id", "resourceId", "featureId"})
        if (!request.value(name).empty()) throw unsupported(name, "The server does not read this parameter");
    const std::string types = typeNames(request), filter = request.value("filter");
    const Layer& layer = layerNamed(context, types);
    const std::string stored = Offer::urnOf(context.offer.stored(layer.crsCode));
    const std::string crsName = request.value("srsName", stored);
    return {Protocol::WFS,
            wantsJson(version, request) ? Format::GEOJSON : version.gml,
            layer,
            crsName,
            filter.empty() ? request.value("bbox") : boxOfFilter(filter),
            !filter.empty() ? crsName : (version.gml == Format::GML_3_1 ? CRS84 : stored),
            request.count("startIndex", 0, SIZE_MAX, 0),
            request.count(version.countParameter, 0, context.mostFeatures, context.mostFeatures),
            lower(request.value("resultType")) == "hits"};
}

Answer features(const Context& context, const Version& version, const Request& request) {
    const Query query = queryOf(context, version, request);
    const bool isJson = query.format == Format::GEOJSON;
    const Result result = find(context.offer, context.store, query);
    const auto now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    const std::string written = std::to_string(result.written);
    const std::string matched = result.matched ? std::to_string(*result.matched) : (isJson ? "null" : "unknown");
    std::string text = version.fill(context, isJson ? "jsonCollection" : "collection",
                                    {{"base", request.base},
                                     {"name", query.layer.name},
                                     {"srsName", json(result.srsName)},
                                     {"time", fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(now))},
                                     {"matched", matched},
                                     {"count", query.isCount ? matched : written},
                                     {"written", written}});
    (text += result.text) += isJson ? "]}\n" : "</wfs:FeatureCollection>\n";
    return {200, isJson ? "application/json" : version.gmlType, text};
}

}  // namespace

Answer answerWfs(const Context& context, const Request& request) {
    const Version& version = versionOf(request);
    const std::string name = lower(request.value("request"));
    if (name.empty()) throw missing("request");
    if (lower(request.value("service", "WFS")) != "wfs") throw invalid("service", "The service is WFS");
    if (name == "getcapabilities") return capabilities(context, version, request);
    if (name == "describefeaturetype") return schema(context, version, request);
    if (name == "getfeature") return features(context, version, request);
    throw Refusal{"OperationNotSupported", "request", "There is no operation " + name, 501};
}

}  // namespace FeatureServer
