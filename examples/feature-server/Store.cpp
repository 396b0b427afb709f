#include "Store.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <ogrsf_frmts.h>
#include <stdexcept>

namespace FeatureServer {
namespace {

// In the order of OGRwkbGeometryType.
constexpr const char* GEOMETRY_TYPES[] = {"gml:GeometryPropertyType",    "gml:PointPropertyType",
                                          "gml:CurvePropertyType",       "gml:SurfacePropertyType",
                                          "gml:MultiPointPropertyType",  "gml:MultiCurvePropertyType",
                                          "gml:MultiSurfacePropertyType"};

// The source as the calling thread has opened it.
GDALDataset& dataset(const std::string& source) {
    thread_local GDALDatasetUniquePtr opened;
    if (opened == nullptr) opened.reset(GDALDataset::Open(source.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY));
    if (opened == nullptr) throw std::runtime_error("Cannot open " + source + ": " + CPLGetLastErrorMsg());
    return *opened;
}

std::string xmlName(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return text.empty() || std::isdigit(static_cast<unsigned char>(text[0])) != 0 ? "_" + text : text;
}

// A type of 0 is none that this server writes.
std::size_t typeOf(OGRwkbGeometryType type) {
    return wkbFlatten(type) <= wkbMultiPolygon ? wkbFlatten(type) : wkbUnknown;
}

// Returns 0 for a layer without an EPSG code.
unsigned int crsCodeOf(OGRLayer& layer) {
    const OGRSpatialReference* const crs = layer.GetSpatialRef();
    const char* const code = crs == nullptr ? nullptr : crs->GetAuthorityCode(nullptr);
    return code == nullptr ? 0 : static_cast<unsigned int>(std::max(0, std::atoi(code)));
}

Layer describe(OGRLayer& source) {
    const std::string table = source.GetName(), geometry = source.GetGeometryColumn();
    const char* const title = source.GetMetadataItem("IDENTIFIER");
    OGREnvelope extent;
    if (source.GetExtent(&extent) != OGRERR_NONE) throw std::runtime_error(table + " has no extent");
    Layer layer{table,
                title != nullptr ? title : table,
                xmlName(table),
                xmlName(geometry),
                GEOMETRY_TYPES[typeOf(source.GetGeomType())],
                crsCodeOf(source),
                wkbHasZ(source.GetGeomType()) != 0 ? std::size_t{3} : std::size_t{2},
                {extent.MinX, extent.MinY, extent.MaxX, extent.MaxY},
                {}};
    for (int i = 0; i < source.GetLayerDefn()->GetFieldCount(); ++i) {
        const OGRFieldDefn& field = *source.GetLayerDefn()->GetFieldDefn(i);
        const bool isReal = field.GetType() == OFTReal;
        const bool isInteger = field.GetType() == OFTInteger || field.GetType() == OFTInteger64;
        const char* const type = isReal ? "xsd:double" : (isInteger ? "xsd:long" : "xsd:string");
        layer.fields.push_back({xmlName(field.GetNameRef()), type, isReal || isInteger});
    }
    return layer;
}

// Appends the points of a geometry and of its parts.
void append(Chunk& chunk, const OGRGeometry& geometry) {
    const std::size_t type = typeOf(geometry.getGeometryType());
    if (type == wkbPolygon)
        for (const auto* const ring : *geometry.toPolygon()) append(chunk, *ring);
    if (type > wkbPolygon)
        for (const auto* const part : *geometry.toGeometryCollection()) append(chunk, *part);
    if (type >= wkbPolygon || type == 0) return;
    const int count = type == wkbPoint ? 1 : geometry.toLineString()->getNumPoints();
    const std::size_t begin = chunk.ordinates.size();
    chunk.ordinates.resize(begin + static_cast<std::size_t>(count) * chunk.dimension);
    double* const x = &chunk.ordinates[begin];
    double* const z = chunk.dimension == 3 ? x + 2 : nullptr;
    const int stride = static_cast<int>(chunk.dimension * sizeof(double));
    if (type == wkbLineString) return geometry.toLineString()->getPoints(x, stride, x + 1, stride, z, stride);
    x[0] = geometry.toPoint()->getX();
    x[1] = geometry.toPoint()->getY();
    if (z != nullptr) *z = geometry.toPoint()->getZ();
}

}  // namespace

Store::Store(std::string path) : source(std::move(path)) {
    GDALAllRegister();
    for (OGRLayer* const layer : dataset(source).GetLayers())
        if (crsCodeOf(*layer) != 0 && layer->GetFeatureCount() > 0) all.push_back(describe(*layer));
    if (all.empty()) throw std::runtime_error(source + " has no features in a CRS with an EPSG code");
}

const Layer* Store::find(const std::string& name) const {
    const auto found = std::find_if(all.begin(), all.end(), [&](const Layer& layer) { return layer.name == name; });
    return found == all.end() ? nullptr : &*found;
}

OGRLayer& Store::open(const Layer& layer) const {
    OGRLayer* const opened = dataset(source).GetLayerByName(layer.table.c_str());
    if (opened == nullptr) throw std::runtime_error("The layer " + layer.table + " has gone");
    return *opened;
}

Cursor::Cursor(const Store& store, const Layer& layer, const CoordinateTransformation::Bounds* box,
               std::optional<std::int64_t> only)
    : source(store.open(layer)), dimension(layer.dimension), id(only) {
    if (box != nullptr) source.SetSpatialFilterRect(box->minX, box->minY, box->maxX, box->maxY);
    source.ResetReading();
}

Cursor::~Cursor() { source.SetSpatialFilter(nullptr); }

bool Cursor::read(Chunk& chunk, std::size_t most) {
    chunk.dimension = dimension;
    chunk.entries.clear();
    chunk.ordinates.clear();
    while (!finished && chunk.entries.size() < most) {
        std::shared_ptr<OGRFeature> feature(id ? source.GetFeature(*id) : source.GetNextFeature(),
                                            OGRFeature::DestroyFeature);
        finished = feature == nullptr || id.has_value();
        if (feature == nullptr) break;
        const OGRGeometry* const geometry = feature->GetGeometryRef();
        const std::size_t begin = chunk.ordinates.size();
        if (geometry != nullptr && !geometry->IsEmpty()) append(chunk, *geometry);
        chunk.entries.push_back({std::move(feature), begin, chunk.ordinates.size()});
    }
    return !chunk.entries.empty();
}

std::size_t Cursor::count() const { return static_cast<std::size_t>(std::max<GIntBig>(0, source.GetFeatureCount())); }

}  // namespace FeatureServer
