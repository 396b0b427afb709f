#pragma once

#include <cstddef>
#include <set>
#include <string>

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/CoordTransformer.h"
#include "CoordinateTransformation/CrsCreator.h"

// Fakes of the parts that need PROJ, for tests of the parts that do not.
namespace TestSupport {

using CoordinateTransformation::AbstractCrs;
using CoordinateTransformation::CoordTransformer;
using CoordinateTransformation::CrsCreator;

// Does not change coordinates.
class FakeTransformer : public CoordTransformer {
public:
    void transformCoordinates(const AbstractCrs*, const AbstractCrs*, double&, double&, double*) const override {}
};

// Tracks the live CRS, so that tests can count them and release those that the library leaves behind.
class LiveCrs {
public:
    ~LiveCrs() { releaseAll(); }
    void add(const AbstractCrs* crs) { alive.insert(crs); }
    void remove(const AbstractCrs* crs) { alive.erase(crs); }
    std::size_t count() const { return alive.size(); }
    bool contains(const AbstractCrs* crs) const { return alive.count(crs) != 0; }
    void releaseAll() {
        while (!alive.empty()) delete *alive.begin();
    }

private:
    std::set<const AbstractCrs*> alive;
};

// Codes whose properties matter to tests, with their properties in EPSG. Every other code is a projected CRS with
// easting first.
struct FakeCode {
    unsigned int code;
    bool isGeographic;
    bool isEastNorth;
};
constexpr FakeCode FAKE_CODES[] = {
    {4258, true, false},   {4326, true, false},   {4979, true, false},
    {31467, false, false}, {31468, false, false}, {31469, false, false},
};

inline FakeCode fakeCode(unsigned int code) {
    for (const FakeCode& known : FAKE_CODES)
        if (known.code == code) return known;
    return {code, false, true};
}

// A CRS with any codes. It is not bound to PROJ.
class FakeCrs : public AbstractCrs {
public:
    FakeCrs(const CrsCreator& crsCreator, const CoordTransformer& crsTransformer, unsigned int primary,
            unsigned int secondary, LiveCrs* liveCrs = nullptr)
        : AbstractCrs(crsCreator, crsTransformer), live(liveCrs) {
        FakeCrs::setCode(primary, secondary, false);
        FakeCrs::setDimFromCodes();
        if (live != nullptr) live->add(this);
    }
    FakeCrs(const FakeCrs& other) : AbstractCrs(other), live(other.live) {
        if (live != nullptr) live->add(this);
    }
    ~FakeCrs() override {
        if (live != nullptr) live->remove(this);
    }

    AbstractCrs* copy() const override { return new FakeCrs(*this); }
    double getUnitEquivalentInM() const override { return isGeographic() ? 111319.4907931134 : 1.0; }
    bool isCartesian() const override { return !isGeographic(); }
    bool isGeographic() const override { return fakeCode(primaryCode).isGeographic; }
    using AbstractCrs::operator=;
    FakeCrs& operator=(const FakeCrs& other) {
        AbstractCrs::operator=(other);
        return *this;
    }
    void setDimFromCodes() override {
        primaryDim = primaryCode == 4979 ? 3 : 2;
        compoundDim = secCompoundCode != 0 ? 1 : 0;
    }
    void setCode(unsigned int primary, unsigned int secondary, bool) override {
        primaryCode = primary;
        secCompoundCode = secondary;
        if (primary != 0) identifier = "EPSG:" + std::to_string(primary);
        if (primary != 0 && secondary != 0) identifier += "*EPSG:" + std::to_string(secondary);
    }
    void setEpsgStandardAxisOrder() override { axisOrderEastNorthOrLonLat = fakeCode(primaryCode).isEastNorth; }
    void setCustomProperties(unsigned int primary, unsigned int secondary, bool eastNorthOrLonLat, double primaryScale,
                             double secCompoundScale) override {
        setCode(primary, secondary, false);
        axisOrderEastNorthOrLonLat = eastNorthOrLonLat;
        primaryScaleFactor = primaryScale;
        secCompoundScaleFactor = secCompoundScale;
    }

private:
    LiveCrs* live;
};

// Creates FakeCrs. Its pool is empty, and it allows every CRS. Tests override what they need.
class FakeCreator : public CrsCreator {
public:
    explicit FakeCreator(LiveCrs* liveCrs = nullptr) : live(liveCrs) {}

    const AbstractCrs* getFromNameCache(const std::string&, bool) const override { return nullptr; }
    const AbstractCrs* getFromCodeCache(const std::string&, bool) const override { return nullptr; }
    AbstractCrs* createFromCode(unsigned int primary, unsigned int secondary, bool standardAxisOrder) const override {
        auto* const crs = new FakeCrs(*this, transformer, primary, secondary, live);
        if (standardAxisOrder) crs->setEpsgStandardAxisOrder();
        return crs;
    }
    void init() override {}
    AbstractCrs* createDefault() const override { return createFromCode(0, 1, false); }
    AbstractCrs* createUnknown() const override { return createFromCode(0, 0, false); }

protected:
    bool isCrsAllowed(const AbstractCrs*) const override { return true; }

    FakeTransformer transformer;
    LiveCrs* live;
};

}  // namespace TestSupport
