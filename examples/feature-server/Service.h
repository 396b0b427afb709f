#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "CoordinateTransformation/CoordinateTransformation.h"

class OGRFeature;

namespace FeatureServer {

using namespace CoordinateTransformation;

// What is thrown for a request that is answered with an exception report.
struct Refusal : std::runtime_error {
    Refusal(std::string exceptionCode, std::string parameter, const std::string& text, int httpStatus = 400)
        : runtime_error(text), code(std::move(exceptionCode)), locator(std::move(parameter)), status(httpStatus) {}

    std::string code, locator;
    int status;
};
Refusal invalid(const std::string& parameter, const std::string& text);

// The text of the exception that is being handled, behind the service exception code if it has one.
std::string currentFailure();

// The default CRS of OGC API - Features: WGS 84 with the longitude first.
constexpr char CRS84[] = "http://www.opengis.net/def/crs/OGC/1.3/CRS84";

// Clients of WFS expect the longitude first under "EPSG:4326", those of the API have only URLs and the registry's
// order.
enum class Protocol { WFS, API };

// A CRS as documents list it. An alias is listed only where its own form is used, so `urn` or `url` may be empty.
struct ListedCrs {
    std::string urn, url;
    bool eastFirst;
    CrsDescription description;
};

// The CRS that the server offers, from one reading of the XML fragment.
//
// Threads: never changes; requests share it without locks. A request keeps it alive until its answer is complete,
// because its CRS handles borrow from the configurations.
class Offer {
public:
    // Throws what CrsConfig::init throws, and std::runtime_error if CRS84 is not the first.
    Offer(const std::string& fragmentFile, const std::string& projDirectory);

    // The CRS in the axis order of its name. Throws Refusal, at the parameter `locator`, for a name that is unknown,
    // bad or not offered.
    Crs named(Protocol protocol, const std::string& name, const std::string& locator) const;
    // The CRS in which an answer writes coordinates of two or three dimensions under `name`.
    Crs written(Protocol protocol, const std::string& name, const Crs& crs, std::size_t dimension) const;
    // The CRS with the easting or longitude first, as GDAL delivers coordinates.
    Crs stored(unsigned int code) const { return Crs(registry->getCreator().createFromCode(code, 0, false)); }
    bool offers(unsigned int code) const { return registry->isCrsConfigured(code); }

    // The name of a CRS in the form in which the request named it.
    static std::string nameLike(const std::string& requested, const Crs& crs);
    static std::string urnOf(const Crs& crs) { return crs->getAliasOrAsOgcURN(nullptr, false); }
    static std::string urlOf(const Crs& crs);
    int decimalPlaces(const Crs& crs) const;
    // The box of a layer, with the longitude first.
    Bounds geographicBox(unsigned int code, const Bounds& extent) const;
    const std::vector<ListedCrs>& listed() const { return list; }

private:
    const CrsConfig& of(Protocol protocol) const { return protocol == Protocol::WFS ? *established : *registry; }

    std::unique_ptr<const CrsConfig> established, registry;
    std::vector<ListedCrs> list;
};

struct Field {
    int index;
    std::string name;
    std::string schemaType;
};

// A table of features. All its coordinates are in one CRS, with the easting or longitude first.
struct Layer {
    std::string table, title;
    std::string name, geometryName;  // XML names, as those of the fields
    const char* geometryType;        // of GML
    unsigned int crsCode;
    std::size_t dimension;
    Bounds extent;
    std::vector<Field> fields;
};

// The layers of a GeoPackage, or of any other source that GDAL reads.
//
// Threads: any number; each thread opens the source for itself at its first request, because a GDAL dataset serves one
// thread at a time.
class Store {
public:
    // Throws std::runtime_error if the source cannot be opened or has no features in a CRS with an EPSG code.
    explicit Store(std::string dataSource);

    const std::vector<Layer>& layers() const { return all; }
    const Layer* find(const std::string& name) const;
    // The number of all features of a layer.
    std::size_t count(const Layer& layer) const;
    // Passes features in the order of the source, until `use` returns false: those that intersect a box in the CRS of
    // the layer, the one with an id, or all.
    void read(const Layer& layer, const Bounds* box, const std::int64_t* id,
              const std::function<bool(OGRFeature&)>& use) const;

private:
    std::string source;
    std::vector<Layer> all;
};

using Values = std::map<std::string, std::string>;

std::string lower(const std::string& text);

struct Request {
    std::string path;
    std::string base;   // the address of the server, such as "http://127.0.0.1:8080"
    Values parameters;  // by names in lower case

    // The value of a parameter, or `absent`.
    std::string value(const std::string& name, const std::string& absent = "") const;
    // Reads an integer from `least` to `most`; a greater one counts as `most`. Throws Refusal.
    std::size_t count(const std::string& name, std::size_t least, std::size_t most, std::size_t absent) const;
};

struct Answer {
    int status;
    std::string type;
    std::string body;
    std::string contentCrs = {};
};

// Texts with places for values such as {title}, by name.
using Templates = std::map<std::string, std::string>;
// Reads files in which "== name" begins a text. Throws std::runtime_error for a folder without any.
Templates readTemplates(const std::filesystem::path& folder);

// What an answer is made from. The offer is that of the time when the request came in.
struct Context {
    const Offer& offer;
    const Store& store;
    const Templates& templates;
    std::size_t mostFeatures;

    std::string fill(const std::string& name, const Values& values) const;
};

enum class Format { GML_3_1, GML_3_2, GEOJSON };

// The features that a request asks for.
struct Query {
    Protocol protocol;
    Format format;
    const Layer& layer;
    std::string crsName;
    // "minX,minY,maxX,maxY", or six numbers with heights, which are ignored, and the name of a CRS if one follows.
    // Without a box all features are found.
    std::string box;
    std::string boxCrsName;  // if the box names none
    std::size_t offset, limit;
    bool isCount = false;
    std::optional<std::int64_t> id = {};
};

struct Result {
    std::string text;  // members of a collection of WFS, or GeoJSON separated by commas
    std::string srsName, url;
    std::size_t written = 0;
    std::optional<std::size_t> matched = {};  // nothing if the reading ended before it was known
    bool more = false;
};

// Throws Refusal for a name or a box that is bad, and TransExecException for a feature that cannot be transformed.
Result find(const Offer& offer, const Store& store, const Query& query);

// The answer to any request. A failure is answered with a report.
Answer answer(const Context& context, const Request& request);
// Throw Refusal for a request that is answered with a report.
Answer answerWfs(const Context& context, const Request& request);
Answer answerApi(const Context& context, const Request& request);

// Adds west, south, east and north of a box to `values`.
Values withBox(const Bounds& box, Values values);
// A copy of a text that GDAL has allocated, and that is freed; "null" if GDAL has none.
std::string taken(char* text);
// Text of an XML element or attribute, without what XML does not allow.
std::string xml(const std::string& text);
// A JSON string in quotes.
std::string json(const std::string& text);

}  // namespace FeatureServer
