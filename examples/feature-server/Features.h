#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Offer.h"
#include "Store.h"

class OGRGeometry;

namespace FeatureServer {

// A box in the CRS, and in the axis order, of its name.
struct Box {
    Bounds bounds;
    Crs crs;
};

// Reads "minX,minY,maxX,maxY", or six numbers with heights, which are ignored, and the name of a CRS if one follows.
// Throws Refusal.
Bounds parseBox(const std::string& text, std::string& crsName);

// The features that a request asks for.
struct Selection {
    const Layer& layer;
    Crs target;
    std::optional<Box> box = {};
    std::optional<std::int64_t> id = {};
    std::size_t offset = 0;
    std::size_t limit = SIZE_MAX;
};

struct Outcome {
    std::size_t written = 0;
    std::optional<std::size_t> matched = {};  // nothing if the reading ended before it was known
    bool more = false;
};

// GEOJSON_TEXT_IDS names features as WFS does, "places.12" instead of 12.
enum class Format { GML_3_1, GML_3_2, GEOJSON, GEOJSON_TEXT_IDS };

// Writes features one after another into one text: members of a feature collection of WFS 1.1 or 2.0, or GeoJSON
// separated by commas.
class FeatureWriter {
public:
    // A negative number of decimal places asks for the significant ones.
    FeatureWriter(Format format, const Layer& layer, const std::string& srsName, std::size_t dimension,
                  int decimalPlaces);
    void write(const Chunk& chunk, const Chunk::Entry& entry);

    std::string text;

private:
    void writeGml(const OGRFeature& feature, const OGRGeometry* geometry);
    void writeJson(const OGRFeature& feature, const OGRGeometry* geometry);
    void writeGeometry(const OGRGeometry& geometry, std::size_t type, bool isWhole);
    void writeVertex();

    Format format;
    bool isJson;
    const Layer& layer;
    std::string srs;
    std::size_t dimension;
    int decimalPlaces;
    // Of the feature that is being written.
    std::string id;
    const double* next = nullptr;
    std::size_t stride = 2;
    int parts = 0;
};

// Passes the selected features to `writer`, with their points in the target CRS. Without a writer only counts what
// matches. Throws TransExecException for a feature that cannot be transformed, and Refusal for a box that cannot.
Outcome select(const Store& store, const Offer& offer, const Selection& selection, FeatureWriter* writer);

// Replaces what XML does not allow in text.
std::string xml(std::string_view text);
// A JSON string in quotes.
std::string json(std::string_view text);

}  // namespace FeatureServer
