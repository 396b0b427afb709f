#include <algorithm>
#include <cstdint>
#include <httplib.h>
#include <set>
#include <vector>

#include <fmt/format.h>

#include "Features.h"
#include "Service.h"

namespace FeatureServer {
namespace {

constexpr char JSON[] = "application/json";
constexpr char GEOJSON[] = "application/geo+json";
constexpr char CRS84[] = "http://www.opengis.net/def/crs/OGC/1.3/CRS84";
constexpr std::size_t DEFAULT_LIMIT = 10;

template <typename Items, typename Write>
std::string joined(const Items& items, Write write) {
    std::string text;
    for (const auto& item : items) text += (text.empty() ? "" : ",") + write(item);
    return text;
}

// The CRS with a URL; the default of the protocol comes first.
std::vector<ListedCrs> crsOf(const Context& context) {
    std::vector<ListedCrs> list = context.offer.listed();
    std::stable_partition(list.begin(), list.end(), [](const ListedCrs& crs) { return crs.url == CRS84; });
    list.erase(std::remove_if(list.begin(), list.end(), [](const ListedCrs& crs) { return crs.url.empty(); }),
               list.end());
    return list;
}

std::string crsEntry(const Context& context, const ListedCrs& crs) {
    const auto box = crs.description.box.value_or(CoordinateTransformation::GeographicBox{-180, -90, 180, 90});
    return context.api.fill("crs", withBox({box.west, box.south, box.east, box.north},
                                           {{"url", json(crs.url)},
                                            {"urn", json(crs.urn)},
                                            {"title", json(crs.description.name)},
                                            {"area", json(crs.description.area)},
                                            {"unit", json(crs.description.unit)},
                                            {"axisOrder", crs.eastFirst ? "easting, northing" : "northing, easting"},
                                            {"decimalPlaces", std::to_string(crs.decimalPlaces)}}));
}

std::string collectionEntry(const Context& context, const Request& request, const Layer& layer) {
    return context.api.fill(
        "collection", withBox(context.offer.geographicBox(layer.crsCode, layer.extent),
                              {{"base", request.base},
                               {"name", layer.name},
                               {"title", json(layer.title)},
                               {"crsUrls", joined(crsOf(context), [](const ListedCrs& crs) { return json(crs.url); })},
                               {"storedCrs", Offer::urlOf(context.offer.stored(layer.crsCode))}}));
}

// The landing page and the other documents, which the file of templates names by their paths.
Answer document(const Context& context, const Request& request) {
    const auto collection = [&](const Layer& layer) { return collectionEntry(context, request, layer); };
    const auto crs = [&](const ListedCrs& entry) { return crsEntry(context, entry); };
    return {200, request.path == "/api" ? "application/vnd.oai.openapi+json;version=3.0" : JSON,
            context.api.fill(request.path, {{"base", request.base},
                                            {"mostFeatures", std::to_string(context.mostFeatures)},
                                            {"crs", joined(crsOf(context), crs)},
                                            {"collections", joined(context.store.layers(), collection)}})};
}

void refuseUnknown(const Request& request, const std::set<std::string>& known) {
    for (const auto& parameter : request.parameters)
        if (known.count(parameter.first) == 0)
            throw Refusal{400, "InvalidParameterValue", parameter.first, "There is no such parameter"};
}

std::optional<Box> boxOf(const Context& context, const Request& request) {
    const Crs crs = context.offer.named(Protocol::API, request.value("bbox-crs", CRS84), "bbox-crs");
    if (request.value("bbox").empty()) return {};
    std::string rest;
    const Bounds bounds = parseBox(request.value("bbox"), rest);
    if (!rest.empty()) throw Refusal{400, "InvalidParameterValue", "bbox", "A box has numbers only"};
    return Box{bounds, crs};
}

// The link to the same request with another offset.
std::string pageLink(const Context& context, const Request& request, const char* relation, std::size_t offset) {
    httplib::Params parameters(request.parameters.begin(), request.parameters.end());
    parameters.erase("offset");
    parameters.emplace("offset", std::to_string(offset));
    return context.api.fill("link", {{"relation", relation},
                                     {"url", request.base + httplib::append_query_params(request.path, parameters)}});
}

std::string pageLinks(const Context& context, const Request& request, const Selection& selection, bool more) {
    std::string links = pageLink(context, request, "self", selection.offset);
    if (more) links += "," + pageLink(context, request, "next", selection.offset + selection.limit);
    const std::size_t before = selection.offset - std::min(selection.offset, selection.limit);
    return before < selection.offset ? links + "," + pageLink(context, request, "prev", before) : links;
}

// Reads an id; -1 is the id of no feature.
std::int64_t idOf(const std::string& text) {
    const bool isNumber = text.size() < 19 && text.find_first_not_of("0123456789") == std::string::npos;
    return isNumber ? std::stoll(text) : -1;
}

// The features of a collection, or the one with an id.
Answer features(const Context& context, const Request& request, const Layer& layer, const std::string& id) {
    const bool isOne = !id.empty();
    const std::set<std::string> more = {"bbox", "bbox-crs", "crs", "datetime", "f", "limit", "offset"};
    refuseUnknown(request, isOne ? std::set<std::string>{"crs", "f"} : more);
    const std::string requested = request.value("crs", CRS84);
    const Crs crs = context.offer.named(Protocol::API, requested, "crs");
    // The header has a URL, also for a CRS that the request named in another form.
    const std::string name = Offer::nameLike(requested, crs);
    const std::string url = name.rfind("http:", 0) == 0 ? name : Offer::urlOf(crs);
    Selection selection{layer, context.offer.written(Protocol::API, name, crs, layer.dimension),
                        boxOf(context, request)};
    if (isOne) selection.id = idOf(id);
    selection.limit = request.count("limit", 1, context.mostFeatures, DEFAULT_LIMIT);
    selection.offset = request.count("offset", 0, SIZE_MAX, 0);
    FeatureWriter writer(Format::GEOJSON, layer, "", selection.target->getDim(), context.offer.decimalPlaces(crs));
    const Outcome outcome = select(context.store, context.offer, selection, &writer);
    if (isOne && outcome.written == 0) throw Refusal{404, "NotFound", "", "There is no feature " + id};
    std::string text = isOne ? writer.text.substr(0, writer.text.size() - 1) : R"({"type":"FeatureCollection")";
    if (!isOne) text += fmt::format(R"(,"numberReturned":{})", outcome.written);
    if (!isOne && outcome.matched) text += fmt::format(R"(,"numberMatched":{})", *outcome.matched);
    text += ",\"links\":[" + pageLinks(context, request, selection, outcome.more) + "]";
    if (!isOne) (text += ",\"features\":[\n" + writer.text) += ']';
    return {200, GEOJSON, text + "}\n", url};
}

Answer route(const Context& context, const Request& request) {
    std::vector<std::string> parts;
    for (std::size_t begin = 1, end = 0; begin < request.path.size(); begin = end + 1) {
        end = std::min(request.path.find('/', begin), request.path.size());
        parts.push_back(request.path.substr(begin, end - begin));
    }
    if (context.api.has(request.path) && request.path[0] == '/') return document(context, request);
    const bool isCollection = parts.size() > 1 && parts[0] == "collections";
    const Layer* const layer = isCollection ? context.store.find(parts[1]) : nullptr;
    if (layer == nullptr || parts.size() > 4 || (parts.size() > 2 && parts[2] != "items"))
        throw Refusal{404, "NotFound", "", "There is nothing at " + request.path};
    if (parts.size() == 2) return {200, JSON, collectionEntry(context, request, *layer)};
    return features(context, request, *layer, parts.size() == 4 ? parts[3] : "");
}

Answer report(const Context& context, const Refusal& refusal) {
    const Values values = {
        {"code", json(refusal.code)}, {"locator", json(refusal.locator)}, {"text", json(refusal.text)}};
    return {refusal.status, JSON, context.api.fill("report", values)};
}

}  // namespace

Answer answerApi(const Context& context, const Request& request) {
    try {
        return route(context, request);
    } catch (const Refusal& refusal) {
        return report(context, refusal);
    } catch (...) {
        return report(context, {500, "NoApplicableCode", "", currentFailure()});
    }
}

}  // namespace FeatureServer
