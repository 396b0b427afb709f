#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <ogrsf_frmts.h>
#include <stdexcept>

#include "Service.h"

namespace FeatureServer {
namespace {

// In the order of OGRwkbGeometryType.
constexpr const char* GEOMETRY_TYPES[] = {"gml:GeometryPropertyType",    "gml:PointPropertyType",
                                          "gml:CurvePropertyType",       "gml:SurfacePropertyType",
                                          "gml:MultiPointPropertyType",  "gml:MultiCurvePropertyType",
                                          "gml:MultiSurfacePropertyType"};

// The source as this thread has opened it.
thread_local GDALDatasetUniquePtr opened;

// The text of the failure may reach a client, and the source may name a password. GDAL reports both to the operator.
GDALDataset& dataset(const std::string& source) {
    CPLErrorReset();
    if (opened == nullptr) opened.reset(GDALDataset::Open(source.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY));
    if (opened == nullptr) throw std::runtime_error("The source of the features cannot be opened");
    return *opened;
}

// For GDAL a lost connection is the end of the features. The thread opens the source again at its next request.
void refuseFailure() {
    if (CPLGetLastErrorType() < CE_Failure) return;
    opened.reset();
    throw std::runtime_error("The features cannot be read");
}

OGRLayer& open(const std::string& source, const Layer& layer) {
    OGRLayer* const found = dataset(source).GetLayerByName(layer.table.c_str());
    if (found == nullptr) throw std::runtime_error("The layer " + layer.name + " has gone");
    found->SetSpatialFilter(nullptr);
    found->SetAttributeFilter(nullptr);
    return *found;
}

std::string xmlName(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return text.empty() || std::isdigit(static_cast<unsigned char>(text[0])) != 0 ? "_" + text : text;
}

// Returns 0 for a layer without an EPSG code.
unsigned int crsCodeOf(OGRLayer& layer) {
    const OGRSpatialReference* const crs = layer.GetSpatialRef();
    const char* const code = crs == nullptr ? nullptr : crs->GetAuthorityCode(nullptr);
    return code == nullptr ? 0 : static_cast<unsigned int>(std::strtoul(code, nullptr, 10));
}

std::vector<Field> fieldsOf(OGRLayer& source) {
    std::vector<Field> fields;
    for (int i = 0; i < source.GetLayerDefn()->GetFieldCount(); ++i) {
        const OGRFieldDefn& field = *source.GetLayerDefn()->GetFieldDefn(i);
        const bool isInteger = field.GetType() == OFTInteger || field.GetType() == OFTInteger64;
        const char* const type = field.GetType() == OFTReal ? "xsd:double" : (isInteger ? "xsd:long" : "xsd:string");
        fields.push_back({i, xmlName(field.GetNameRef()), type});
    }
    return fields;
}

Layer describe(OGRLayer& source) {
    const std::string table = source.GetName();
    const char* const title = source.GetMetadataItem("IDENTIFIER");
    const OGRwkbGeometryType type = wkbFlatten(source.GetGeomType());
    OGREnvelope extent;
    if (source.GetExtent(&extent) != OGRERR_NONE) throw std::runtime_error(table + " has no extent");
    return {table,
            title != nullptr ? title : table,
            xmlName(table),
            xmlName(source.GetGeometryColumn()),
            GEOMETRY_TYPES[type <= wkbMultiPolygon ? type : wkbUnknown],
            crsCodeOf(source),
            wkbHasZ(source.GetGeomType()) != 0 ? std::size_t{3} : std::size_t{2},
            {extent.MinX, extent.MinY, extent.MaxX, extent.MaxY},
            fieldsOf(source)};
}

}  // namespace

Store::Store(std::string dataSource) : source(std::move(dataSource)) {
    GDALAllRegister();
    for (OGRLayer* const layer : dataset(source).GetLayers())
        if (crsCodeOf(*layer) != 0 && layer->GetFeatureCount() > 0) all.push_back(describe(*layer));
    if (all.empty()) throw std::runtime_error("There are no features in a CRS with an EPSG code");
}

const Layer* Store::find(const std::string& name) const {
    const auto found = std::find_if(all.begin(), all.end(), [&](const Layer& layer) { return layer.name == name; });
    return found == all.end() ? nullptr : &*found;
}

std::size_t Store::count(const Layer& layer) const {
    const GIntBig number = open(source, layer).GetFeatureCount();
    refuseFailure();
    return static_cast<std::size_t>(number);
}

void Store::read(const Layer& layer, const Bounds* box, const std::int64_t* id,
                 const std::function<bool(OGRFeature&)>& use) const {
    OGRLayer& table = open(source, layer);
    if (id != nullptr)
        table.SetAttributeFilter(CPLSPrintf("\"%s\" = " CPL_FRMT_GIB, table.GetFIDColumn(), GIntBig{*id}));
    if (box != nullptr) table.SetSpatialFilterRect(box->minX, box->minY, box->maxX, box->maxY);
    table.ResetReading();
    OGRFeatureUniquePtr feature;
    do {
        CPLErrorReset();
        feature.reset(table.GetNextFeature());
        refuseFailure();
    } while (feature != nullptr && use(*feature));
    table.ResetReading();  // ends the transaction of a database
}

}  // namespace FeatureServer
