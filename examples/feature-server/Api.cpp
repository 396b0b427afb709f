#include <algorithm>
#include <httplib.h>
#include <regex>
#include <set>

#include <fmt/format.h>

#include "Service.h"

namespace FeatureServer {
namespace {

constexpr char GEOJSON[] = "application/geo+json";

// Separates texts by commas. An item without a text is left out.
template <typename Items, typename Write>
std::string joined(const Items& items, Write write) {
    std::string text;
    for (const auto& item : items)
        if (const std::string one = write(item); !one.empty()) text += (text.empty() ? "" : ",") + one;
    return text;
}

std::string urlEntry(const ListedCrs& crs) { return crs.url.empty() ? "" : json(crs.url); }

std::string crsEntry(const Context& context, const ListedCrs& crs) {
    if (crs.url.empty()) return "";
    const auto box = crs.description.box.value_or(CoordinateTransformation::GeographicBox{-180, -90, 180, 90});
    return context.fill("crs", withBox({box.west, box.south, box.east, box.north},
                                       {{"url", json(crs.url)},
                                        {"title", json(crs.description.name)},
                                        {"unit", json(crs.description.unit)},
                                        {"axisOrder", crs.eastFirst ? "easting, northing" : "northing, easting"}}));
}

std::string collectionEntry(const Context& context, const Request& request, const Layer& layer) {
    return context.fill("collection", withBox(context.offer.geographicBox(layer.crsCode, layer.extent),
                                              {{"base", request.base},
                                               {"name", layer.name},
                                               {"title", json(layer.title)},
                                               {"crsUrls", joined(context.offer.listed(), urlEntry)},
                                               {"storedCrs", Offer::urlOf(context.offer.stored(layer.crsCode))}}));
}

// The landing page and the other documents, which the file of templates names by their paths.
Answer document(const Context& context, const Request& request) {
    const auto collection = [&](const Layer& layer) { return collectionEntry(context, request, layer); };
    const auto crs = [&](const ListedCrs& entry) { return crsEntry(context, entry); };
    return {200, request.path == "/api" ? "application/vnd.oai.openapi+json;version=3.0" : "application/json",
            context.fill("api " + request.path, {{"base", request.base},
                                                 {"mostFeatures", std::to_string(context.mostFeatures)},
                                                 {"crs", joined(context.offer.listed(), crs)},
                                                 {"collections", joined(context.store.layers(), collection)}})};
}

void refuseUnknown(const Request& request, const std::set<std::string>& known) {
    for (const auto& [name, value] : request.parameters)
        if (known.count(name) == 0) throw invalid(name, "There is no such parameter");
}

std::string link(const Context& context, const char* relation, const std::string& path, const Values& parameters) {
    const httplib::Params query(parameters.begin(), parameters.end());
    const std::string url = query.empty() ? path : httplib::append_query_params(path, query);
    return context.fill("link", {{"relation", relation}, {"url", url}});
}

// The features of a collection, or the one with an id.
Answer features(const Context& context, const Request& request, const Layer& layer, const std::string& id) {
    const std::set<std::string> many = {"bbox", "bbox-crs", "crs", "datetime", "f", "limit", "offset"};
    refuseUnknown(request, id.empty() ? many : std::set<std::string>{"crs", "f"});
    Query query{Protocol::API,
                Format::GEOJSON,
                layer,
                request.value("crs", CRS84),
                request.value("bbox"),
                request.value("bbox-crs", CRS84),
                request.count("offset", 0, SIZE_MAX, 0),
                request.count("limit", 1, context.mostFeatures, 10)};
    if (!id.empty()) query.id = std::stoll(id);
    const Result result = find(context.offer, context.store, query);
    std::string links = link(context, "self", request.base + request.path, request.parameters);
    Values next = request.parameters;
    next["offset"] = std::to_string(query.offset + query.limit);
    if (result.more) links += "," + link(context, "next", request.base + request.path, next);
    if (!id.empty() && result.written == 0) throw Refusal{"NotFound", "", "There is no feature " + id, 404};
    if (!id.empty()) return {200, GEOJSON, R"({"links":[)" + links + "]," + result.text.substr(1) + "\n", result.url};
    const std::string matched = result.matched ? fmt::format(R"("numberMatched": {}, )", *result.matched) : "";
    const std::string head =
        context.fill("items", {{"matched", matched}, {"written", std::to_string(result.written)}, {"links", links}});
    return {200, GEOJSON, head + result.text + "]}\n", result.url};
}

}  // namespace

Answer answerApi(const Context& context, const Request& request) {
    static const std::regex PATH(R"(/collections/(\w+)(/items(/(\d{1,18}))?)?)");
    if (context.templates.count("api " + request.path) != 0) return document(context, request);
    std::smatch parts;
    const bool isCollection = std::regex_match(request.path, parts, PATH);
    const Layer* const layer = isCollection ? context.store.find(parts[1]) : nullptr;
    if (layer == nullptr) throw Refusal{"NotFound", "", "There is nothing at " + request.path, 404};
    if (!parts[2].matched) return {200, "application/json", collectionEntry(context, request, *layer)};
    return features(context, request, *layer, parts[4]);
}

}  // namespace FeatureServer
