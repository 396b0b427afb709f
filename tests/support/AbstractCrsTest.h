#pragma once

#include <ostream>

#include <gtest/gtest.h>

#include "CoordinateTransformation/AbstractCrs.h"
#include "tests/support/FakeCrs.h"

namespace CoordinateTransformation {

// The smallest concrete CRS, with every field public. It is not geographic. The setters that derive fields in other
// classes do nothing here.
class BareCrs : public AbstractCrs {
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

struct Shape {
    unsigned int primaryCode;
    unsigned int secCompoundCode;
    unsigned int primaryDim;
    unsigned int compoundDim;

    bool operator==(const Shape& other) const {
        return primaryCode == other.primaryCode && secCompoundCode == other.secCompoundCode &&
               primaryDim == other.primaryDim && compoundDim == other.compoundDim;
    }
    friend std::ostream& operator<<(std::ostream& stream, const Shape& shape) {
        return stream << shape.primaryCode << '*' << shape.secCompoundCode << " of " << shape.primaryDim << '+'
                      << shape.compoundDim << " dimensions";
    }
};

inline Shape shapeOf(const BareCrs& crs) {
    return {crs.primaryCode, crs.secCompoundCode, crs.primaryDim, crs.compoundDim};
}

class AbstractCrsTest : public testing::Test {
protected:
    BareCrs given(const Shape& shape) const {
        BareCrs crs(creator, transformer);
        crs.primaryCode = shape.primaryCode;
        crs.secCompoundCode = shape.secCompoundCode;
        crs.primaryDim = shape.primaryDim;
        crs.compoundDim = shape.compoundDim;
        return crs;
    }

    // Returns a CRS whose fields differ from their defaults and from each other.
    BareCrs givenFilled() const {
        BareCrs crs = given({27700, 5701, 3, 1});
        crs.identifier = "identifier";
        crs.axisOrderEastNorthOrLonLat = false;
        crs.alias = "alias";
        crs.epsgVersion = "6.12";
        crs.primaryScaleFactor = 2.5;
        crs.secCompoundScaleFactor = 0.3048;
        return crs;
    }

    TestSupport::FakeCreator creator;
    TestSupport::FakeTransformer transformer;
    TestSupport::FakeCreator otherCreator;
    TestSupport::FakeTransformer otherTransformer;
};

inline void expectAssignedFieldsEqual(const BareCrs& crs, const BareCrs& expected) {
    EXPECT_EQ(shapeOf(crs), shapeOf(expected));
    EXPECT_EQ(crs.epsgVersion, expected.epsgVersion);
    EXPECT_EQ(crs.alias, expected.alias);
    EXPECT_EQ(crs.axisOrderEastNorthOrLonLat, expected.axisOrderEastNorthOrLonLat);
    EXPECT_EQ(crs.primaryScaleFactor, expected.primaryScaleFactor);
    EXPECT_EQ(crs.secCompoundScaleFactor, expected.secCompoundScaleFactor);
}

inline void expectKeptFieldsEqual(const BareCrs& crs, const BareCrs& expected) {
    EXPECT_EQ(crs.identifier, expected.identifier);
    EXPECT_EQ(&crs.getCreator(), &expected.getCreator());
    EXPECT_EQ(&crs.transformer, &expected.transformer);
}

inline void expectEveryFieldEqual(const BareCrs& crs, const BareCrs& expected) {
    expectAssignedFieldsEqual(crs, expected);
    expectKeptFieldsEqual(crs, expected);
}

}  // namespace CoordinateTransformation
