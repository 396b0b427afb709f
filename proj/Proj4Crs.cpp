#include "CoordinateTransformation/Proj4Crs.h"

#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "CoordinateTransformation/Misconfigured.h"
#include "names/CrsName.h"
#include "platform/ErrnoGuard.h"
#include "proj/AxisOrderTable.h"
#include "proj/Proj4Locks.h"
#include "proj/classic/ClassicProj.h"
#include "text/NumericText.h"

namespace CoordinateTransformation {
namespace {

using ClassicProj::projPJ;
using QSHelpers::convertNumericToText;

// One degree of arc on the WGS 84 equator: 6378137 m * pi / 180.
constexpr double METRES_PER_DEGREE = 111319.4907931134;

struct FreeContext {
    void operator()(ClassicProj::projCtx context) const { ClassicProj::pj_ctx_free(context); }
};
using ContextPtr = std::unique_ptr<ClassicProj::Context, FreeContext>;

// Contexts live as long as the projections made with them: until the process ends. Guarded by proj4DefLock.
std::vector<ContextPtr>& contexts() {
    static auto& kept = *new std::vector<ContextPtr>;
    return kept;
}

// Null when PROJ cannot make the projection.
projPJ makeProjection(unsigned int code) {
    const ErrnoGuard errnoGuard;
    const std::string definition = "+init=epsg:" + convertNumericToText(code);
    ContextPtr context(ClassicProj::pj_ctx_alloc());
    const projPJ projection = ClassicProj::pj_init_plus_ctx(context.get(), definition.c_str());
    if (projection != nullptr) contexts().push_back(std::move(context));
    return projection;
}

}  // namespace

Proj4Crs::Proj4Crs(const CrsCreator& crsCreator, const CoordTransformer& crsTransformer, unsigned int primary,
                   unsigned int secondary, bool applyEpsgStandards)
    : AbstractCrs(crsCreator, crsTransformer) {
    Proj4Crs::setCode(primary, secondary, applyEpsgStandards);
}

Proj4Crs::Proj4Crs(const Proj4Crs& other) = default;

Proj4Crs::~Proj4Crs() = default;

AbstractCrs* Proj4Crs::copy() const { return new Proj4Crs(*this); }

double Proj4Crs::getUnitEquivalentInM() const { return isGeographic() ? METRES_PER_DEGREE : 1.0; }

bool Proj4Crs::isCartesian() const { return !isGeographic(); }

bool Proj4Crs::isGeographic() const { return ClassicProj::pj_is_latlong(static_cast<projPJ>(projDef)) != 0; }

Proj4Crs& Proj4Crs::operator=(const Proj4Crs& other) {
    if (this == &other) return *this;
    AbstractCrs::operator=(other);
    projDef = other.projDef;
    return *this;
}

void Proj4Crs::setDimFromCodes() {
    primaryDim = primaryCode == EPSG_WGS84_3D ? 3 : 2;
    compoundDim = primaryCode != EPSG_WGS84_3D && secCompoundCode != 0 ? 1 : 0;
}

void Proj4Crs::setCode(unsigned int primary, unsigned int secondary, bool applyEpsgStandards) {
    primaryCode = primary;
    secCompoundCode = secondary;
    if (primary != 0) identifier = writeEpsgName({primary, secondary});
    if (applyEpsgStandards) {
        setEpsgStandardAxisOrder();
        setDimFromCodes();
    }
    initProj4();
}

void Proj4Crs::setEpsgStandardAxisOrder() {
    const std::map<unsigned int, bool>& table = getAxisOrderTable();
    const auto entry = table.find(primaryCode);
    axisOrderEastNorthOrLonLat = entry == table.end() || entry->second;
}

void Proj4Crs::setCustomProperties(unsigned int primary, unsigned int secondary, bool eastNorthOrLonLat,
                                   double primaryScale, double secCompoundScale) {
    setCode(primary, secondary, false);
    axisOrderEastNorthOrLonLat = eastNorthOrLonLat;
    primaryScaleFactor = primaryScale;
    secCompoundScaleFactor = secCompoundScale;
}

// A compound CRS is bound through its horizontal part.
void Proj4Crs::initProj4() {
    const std::lock_guard<std::mutex> guard(proj4DefLock);
    std::map<unsigned int, projPJ>& cache = getProj4DefCache();
    const auto cached = cache.find(primaryCode);
    if (cached != cache.end()) {
        projDef = cached->second;
        return;
    }
    const projPJ projection = makeProjection(primaryCode);
    projDef = projection;
    if (projection == nullptr)
        throw Misconfigured("Failed to configure CRS " + convertNumericToText(primaryCode) +
                            ". Please ensure that the CRS is defined properly in the proj4 configuration for "
                            "QuarvelServer.");
    cache.emplace(primaryCode, projection);
}

}  // namespace CoordinateTransformation
