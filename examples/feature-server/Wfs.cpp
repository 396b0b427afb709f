#include <algorithm>
#include <chrono>
#include <cstdint>
#include <strings.h>

#include <fmt/chrono.h>
#include <pugixml.hpp>

#include "Features.h"
#include "Service.h"

namespace FeatureServer {
namespace {

struct Version {
    Protocol protocol;
    const Templates& templates;
    Format gml;
    const char* gmlType;
    const char* gmlNumber;
    const char* countParameter;
};

bool sameText(const std::string& one, const char* other) { return strcasecmp(one.c_str(), other) == 0; }

// Without a version GetCapabilities is answered in the newest one, or in the first of AcceptVersions that is known.
Version versionOf(const Context& context, const Request& request) {
    const bool isNegotiable = sameText(request.value("request"), "GetCapabilities");
    const std::string accepted = isNegotiable ? request.value("acceptVersions", "2.0.0") : "none";
    const std::string number = request.value("version", accepted);
    const auto newer = number.find("2.0."), older = number.find("1.1.");
    if (newer == older && !isNegotiable)
        throw Refusal{400, number == "none" ? "MissingParameterValue" : "InvalidParameterValue", "version",
                      "The versions are 2.0.0 and 1.1.0"};
    if (older < newer)
        return {Protocol::WFS_1_1, context.wfs11, Format::GML_3_1, "text/xml; subtype=gml/3.1.1",
                "3.1.1",           "maxFeatures"};
    return {Protocol::WFS_2_0, context.wfs20, Format::GML_3_2, "application/gml+xml; version=3.2", "3.2", "count"};
}

Answer capabilities(const Context& context, const Version& version, const Request& request) {
    std::string types;
    for (const Layer& layer : context.store.layers()) {
        const std::string stored = Offer::urnOf(context.offer.stored(layer.crsCode));
        std::string otherCrs;
        for (const ListedCrs& crs : context.offer.listed())
            if (!crs.urn.empty() && crs.urn != stored)
                otherCrs += version.templates.fill(
                    "otherCrs",
                    {{"urn", crs.urn}, {"title", xml(crs.description.name)}, {"area", xml(crs.description.area)}});
        types += version.templates.fill(
            "type",
            withBox(
                context.offer.geographicBox(layer.crsCode, layer.extent),
                {{"name", layer.name}, {"title", xml(layer.title)}, {"storedCrs", stored}, {"otherCrs", otherCrs}}));
    }
    const Values values = {
        {"base", request.base}, {"types", types}, {"mostFeatures", std::to_string(context.mostFeatures)}};
    return {200, "text/xml", version.templates.fill("capabilities", values)};
}

// Both versions call the parameter by either name. A prefix may be missing.
std::string typeNames(const Request& request) { return request.value("typeNames", request.value("typeName")); }

const Layer& layerNamed(const Context& context, const std::string& name) {
    const Layer* const layer = context.store.find(name.substr(name.find(':') + 1));
    if (layer != nullptr) return *layer;
    throw Refusal{400, name.empty() ? "MissingParameterValue" : "InvalidParameterValue", "typeNames",
                  "There is no feature type " + name};
}

Answer schema(const Context& context, const Version& version, const Request& request) {
    std::string types, names = typeNames(request);
    if (names.empty())
        for (const Layer& layer : context.store.layers()) names += layer.name + ",";
    for (std::size_t begin = 0, end = 0; begin < names.size(); begin = end + 1) {
        end = std::min(names.find(',', begin), names.size());
        const Layer& layer = layerNamed(context, names.substr(begin, end - begin));
        std::string properties =
            version.templates.fill("property", {{"name", layer.geometryName}, {"type", layer.geometryType}});
        for (const Field& field : layer.fields)
            properties += version.templates.fill("property", {{"name", field.name}, {"type", field.schemaType}});
        types += version.templates.fill("schemaType", {{"name", layer.name}, {"properties", properties}});
    }
    return {200, version.gmlType, version.templates.fill("schema", {{"types", types}})};
}

// The text of a bbox parameter for a filter that is nothing but a box.
std::string boxOfFilter(const std::string& filter) {
    pugi::xml_document document;
    document.load_string(filter.c_str());
    const pugi::xml_node box =
        document.select_node("/*[local-name()='Filter' and count(*)=1]/*[local-name()='BBOX']/*[last()]").node();
    if (!box) throw Refusal{501, "OptionNotSupported", "filter", "A filter can only be a box"};
    std::string text;
    for (const pugi::xpath_node& corner : box.select_nodes(".//text()"))
        text += corner.node().value() + std::string(",");
    std::replace(text.begin(), text.end(), ' ', ',');
    return text + box.attribute("srsName").value();
}

// A box that names no CRS is in longitudes and latitudes in WFS 1.1, and in the CRS of the layer in WFS 2.0. In a
// filter it is in the CRS of the answer, as GDAL writes it.
std::optional<Box> boxOf(const Context& context, const Version& version, const Request& request,
                         const std::string& storedCrs) {
    const std::string filter = request.value("filter");
    const std::string text = filter.empty() ? request.value("bbox") : boxOfFilter(filter);
    if (text.empty()) return {};
    std::string name;
    const Bounds bounds = parseBox(text, name);
    if (name.empty() && !filter.empty()) name = request.value("srsName", storedCrs);
    if (name.empty()) name = version.protocol == Protocol::WFS_1_1 ? "CRS:84" : storedCrs;
    return Box{bounds, context.offer.named(version.protocol, name, "bbox")};
}

bool wantsJson(const Version& version, const Request& request) {
    const std::string format = request.value("outputFormat", version.gmlType);
    if (format.find("json") != std::string::npos) return true;
    if (format.find(version.gmlNumber) != std::string::npos) return false;
    throw Refusal{400, "InvalidParameterValue", "outputFormat", "There is no format " + format};
}

Selection selectionOf(const Context& context, const Version& version, const Request& request, std::string& srsName) {
    for (const char* name : {"sortBy", "storedQuery_id", "resourceId", "featureId"})
        if (!request.value(name).empty())
            throw Refusal{501, "OptionNotSupported", name, "The server does not read this parameter"};
    const Layer& layer = layerNamed(context, typeNames(request));
    const std::string stored = Offer::urnOf(context.offer.stored(layer.crsCode));
    const std::string requested = request.value("srsName", stored);
    const Crs crs = context.offer.named(version.protocol, requested, "srsName");
    const Crs target = context.offer.written(version.protocol, Offer::nameLike(requested, crs), crs, layer.dimension);
    srsName = Offer::nameLike(requested, target);
    return {layer,
            target,
            boxOf(context, version, request, stored),
            {},
            request.count("startIndex", 0, SIZE_MAX, 0),
            request.count(version.countParameter, 0, context.mostFeatures, context.mostFeatures)};
}

Answer features(const Context& context, const Version& version, const Request& request) {
    std::string srsName;
    Selection selection = selectionOf(context, version, request, srsName);
    const bool isJson = wantsJson(version, request), isHits = sameText(request.value("resultType"), "hits");
    // GeoJSON has the easting or longitude first in every CRS.
    if (isJson) selection.target.forceWmsAxisOrder();
    FeatureWriter writer(isJson ? Format::GEOJSON_TEXT_IDS : version.gml, selection.layer, srsName,
                         selection.target->getDim(), context.offer.decimalPlaces(selection.target));
    const Outcome outcome = select(context.store, context.offer, selection, isHits ? nullptr : &writer);
    const auto now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    const std::string written = std::to_string(outcome.written);
    const std::string matched = outcome.matched ? std::to_string(*outcome.matched) : (isJson ? "null" : "unknown");
    std::string text = version.templates.fill(isJson ? "jsonCollection" : "collection",
                                              {{"base", request.base},
                                               {"name", selection.layer.name},
                                               {"srsName", json(srsName)},
                                               {"time", fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(now))},
                                               {"matched", matched},
                                               {"count", isHits ? matched : written},
                                               {"written", written}});
    text.reserve(text.size() + writer.text.size() + 100);
    (text += writer.text) += isJson ? "]}\n" : "</wfs:FeatureCollection>\n";
    return {200, isJson ? "application/json" : version.gmlType, std::move(text)};
}

Answer answer(const Context& context, const Version& version, const Request& request) {
    const std::string name = request.value("request");
    if (name.empty()) throw Refusal{400, "MissingParameterValue", "request", "The request is missing"};
    if (!sameText(request.value("service", "WFS"), "WFS"))
        throw Refusal{400, "InvalidParameterValue", "service", "The service is WFS"};
    if (sameText(name, "GetCapabilities")) return capabilities(context, version, request);
    if (sameText(name, "DescribeFeatureType")) return schema(context, version, request);
    if (sameText(name, "GetFeature")) return features(context, version, request);
    throw Refusal{501, "OperationNotSupported", "request", "There is no operation " + name};
}

Answer report(const Templates& templates, const Refusal& refusal) {
    const Values values = {{"code", refusal.code}, {"locator", xml(refusal.locator)}, {"text", xml(refusal.text)}};
    return {refusal.status, "text/xml", templates.fill("report", values)};
}

}  // namespace

Answer answerWfs(const Context& context, const Request& request) {
    const Templates& templates = request.value("version").rfind("1.", 0) == 0 ? context.wfs11 : context.wfs20;
    try {
        return answer(context, versionOf(context, request), request);
    } catch (const Refusal& refusal) {
        return report(templates, refusal);
    } catch (...) {
        return report(templates, {500, "NoApplicableCode", "", currentFailure()});
    }
}

}  // namespace FeatureServer
