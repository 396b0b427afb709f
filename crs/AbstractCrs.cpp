#include "CoordinateTransformation/AbstractCrs.h"

#include "CoordinateTransformation/CoordTransformer.h"
#include "crs/EpsgCodes.h"

namespace CoordinateTransformation {

AbstractCrs::AbstractCrs(CrsCreator const& crsCreator, CoordTransformer const& crsTransformer)
    : creator(crsCreator), transformer(crsTransformer) {}

AbstractCrs::AbstractCrs(AbstractCrs const& other) = default;

AbstractCrs::~AbstractCrs() = default;

// The identifier stays with the target on purpose: only setCode writes it.
AbstractCrs& AbstractCrs::operator=(AbstractCrs const& other) {
    if (this == &other) return *this;
    primaryCode = other.primaryCode;
    secCompoundCode = other.secCompoundCode;
    epsgVersion = other.epsgVersion;
    alias = other.alias;
    primaryDim = other.primaryDim;
    compoundDim = other.compoundDim;
    axisOrderEastNorthOrLonLat = other.axisOrderEastNorthOrLonLat;
    primaryScaleFactor = other.primaryScaleFactor;
    secCompoundScaleFactor = other.secCompoundScaleFactor;
    return *this;
}

void AbstractCrs::forceDim2D() {
    primaryDim = 2;
    compoundDim = 0;
}

void AbstractCrs::setAxisOrderEastNorthOrLonLat(bool eastNorthOrLonLat) {
    axisOrderEastNorthOrLonLat = eastNorthOrLonLat;
}

void AbstractCrs::setDim(unsigned int dim) {
    const bool dropHeight = primaryCode == EPSG_WGS84_3D && dim == 2;
    const bool addHeight = primaryCode == EPSG_WGS84_2D && dim == 3;
    if (dropHeight || addHeight) {
        primaryCode = dropHeight ? EPSG_WGS84_2D : EPSG_WGS84_3D;
        primaryDim = dim;
    }
    if (dropHeight || addHeight || dim == 2) {
        secCompoundCode = 0;
        compoundDim = 0;
    }
}

double AbstractCrs::getCompoundScaleFactor() const {
    if (getDim() < 3) return 1.0;
    return compoundDim != 0 ? secCompoundScaleFactor : primaryScaleFactor;
}

void AbstractCrs::setScaleFactors(double primary, double secCompound) {
    primaryScaleFactor = primary;
    secCompoundScaleFactor = secCompound;
}

void AbstractCrs::get(unsigned int& primary, unsigned int& secondary, bool& eastNorthOrLonLat, double& primaryScale,
                      double& secCompoundScale) const {
    primary = primaryCode;
    secondary = secCompoundCode;
    eastNorthOrLonLat = axisOrderEastNorthOrLonLat;
    primaryScale = primaryScaleFactor;
    secCompoundScale = secCompoundScaleFactor;
}

void AbstractCrs::setUnknown() {
    primaryCode = 0;
    secCompoundCode = 0;
}

void AbstractCrs::setDefault() {
    primaryCode = 0;
    secCompoundCode = 1;
}

bool AbstractCrs::operator==(AbstractCrs const& other) const {
    return primaryCode == other.primaryCode && secCompoundCode == other.secCompoundCode &&
           primaryDim == other.primaryDim && compoundDim == other.compoundDim &&
           axisOrderEastNorthOrLonLat == other.axisOrderEastNorthOrLonLat && alias == other.alias;
}

bool AbstractCrs::isCodeCompatible(AbstractCrs const* other) const {
    const auto eitherIs = [this, other](unsigned int code) {
        return primaryCode == code || other->primaryCode == code;
    };
    return primaryCode == other->primaryCode || (eitherIs(EPSG_WGS84_2D) && eitherIs(EPSG_WGS84_3D));
}

bool AbstractCrs::isCompatible(AbstractCrs const* other) const {
    return isCodeCompatible(other) && axisOrderEastNorthOrLonLat == other->axisOrderEastNorthOrLonLat &&
           primaryScaleFactor == other->primaryScaleFactor && getDim() == other->getDim() &&
           getCompoundScaleFactor() == other->getCompoundScaleFactor();
}

void AbstractCrs::transformTo(AbstractCrs const* target, double& x, double& y, double& z) const {
    transformer.transformTo(this, target, x, y, &z);
}

void AbstractCrs::transformTo(AbstractCrs const* target, double& x, double& y) const {
    transformer.transformTo(this, target, x, y, nullptr);
}

}  // namespace CoordinateTransformation
