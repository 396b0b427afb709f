#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "CoordinateTransformation/PointTransformer.h"

class OGRFeature;
class OGRLayer;

namespace FeatureServer {

struct Field {
    std::string name;
    const char* schemaType;
    bool isNumber;
};

// A table of features. All its coordinates are in one CRS, with the easting or longitude first.
struct Layer {
    std::string table, title;
    std::string name, geometryName;  // XML names, as those of the fields
    const char* geometryType;        // of GML
    unsigned int crsCode;
    std::size_t dimension;
    CoordinateTransformation::Bounds extent;
    std::vector<Field> fields;
};

// Features with their points in one array, so that one call transforms them. The points of a feature are in the order
// of its geometry, whose own coordinates are not used any more.
struct Chunk {
    struct Entry {
        std::shared_ptr<const OGRFeature> feature;
        std::size_t begin, end;  // of its ordinates
    };
    std::size_t dimension = 2;
    std::vector<Entry> entries;
    std::vector<double> ordinates;
};

// The layers of a GeoPackage, or of any other source that GDAL reads.
//
// Threads: any number; each thread opens the source for itself at its first request, because a GDAL dataset serves one
// thread at a time.
class Store {
public:
    // Throws std::runtime_error if the source cannot be opened or has no features in a CRS with an EPSG code.
    explicit Store(std::string source);

    const std::vector<Layer>& layers() const { return all; }
    const Layer* find(const std::string& name) const;
    OGRLayer& open(const Layer& layer) const;

private:
    std::string source;
    std::vector<Layer> all;
};

// Reads the features of a layer, in the order of the source.
//
// Threads: the one that made it, which has one cursor at a time.
class Cursor {
public:
    // With a box, in the CRS of the layer, reads the features that intersect it; with an id that feature alone.
    Cursor(const Store& store, const Layer& layer, const CoordinateTransformation::Bounds* box,
           std::optional<std::int64_t> id);
    ~Cursor();
    Cursor(const Cursor&) = delete;
    Cursor& operator=(const Cursor&) = delete;

    // Replaces `chunk` by the next features, at most `most`. Returns false if there are none.
    bool read(Chunk& chunk, std::size_t most);
    // The number of features in the box, or of all.
    std::size_t count() const;

private:
    OGRLayer& source;
    std::size_t dimension;
    std::optional<std::int64_t> id;
    bool finished = false;
};

}  // namespace FeatureServer
