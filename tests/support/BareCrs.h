#pragma once

#include "CoordinateTransformation/AbstractCrs.h"

// For tests: a CRS that is what its base makes it, with every field open. Not geographic; the operations that
// would derive one field from another do nothing.
class BareCrs : public CoordinateTransformation::AbstractCrs {
public:
    using AbstractCrs::AbstractCrs;
    using AbstractCrs::operator=;

    using AbstractCrs::alias;
    using AbstractCrs::axisOrderEastNorthOrLonLat;
    using AbstractCrs::compoundDim;
    using AbstractCrs::epsgVersion;
    using AbstractCrs::identifier;
    using AbstractCrs::primaryCode;
    using AbstractCrs::primaryDim;
    using AbstractCrs::primaryScaleFactor;
    using AbstractCrs::secCompoundCode;
    using AbstractCrs::secCompoundScaleFactor;
    using AbstractCrs::transformer;

    BareCrs* copy() const override { return new BareCrs(*this); }
    double getUnitEquivalentInM() const override { return 1.0; }
    bool isCartesian() const override { return true; }
    bool isGeographic() const override { return false; }
    void setDimFromCodes() override {}
    void setCode(unsigned int, unsigned int, bool) override {}
    void setEpsgStandardAxisOrder() override {}
    void setCustomProperties(unsigned int, unsigned int, bool, double, double) override {}
};
