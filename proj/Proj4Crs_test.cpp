#include "CoordinateTransformation/Proj4Crs.h"

#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CoordinateTransformation/Misconfigured.h"
#include "CoordinateTransformation/TransExecException.h"
#include "tests/support/Failures.h"
#include "tests/support/Proj4Test.h"

namespace CoordinateTransformation {
namespace {

using testing::ElementsAre;
using TestSupport::FakeCreator;
using TestSupport::FakeTransformer;
using TestSupport::searchOnlyIn;

class Proj4CrsTest : public TestSupport::Proj4Test {
protected:
    template <typename Action>
    static void expectMisconfigured(Action action, unsigned int code) {
        EXPECT_EQ(TestSupport::reportOf<Misconfigured>(action),
                  "qvConfigurationError: Failed to configure CRS " + std::to_string(code) +
                      ". Please ensure that the CRS is defined properly in the proj4 configuration for QuarvelServer.");
    }
};

using Proj4CrsBindingTest = Proj4CrsTest;

TEST_F(Proj4CrsBindingTest, SharesOneHandlePerPrimaryCode) {
    const Proj4Crs first = crsOf(25832);
    const Proj4Crs second = crsOf(25832);
    EXPECT_NE(first.getProjDef(), nullptr);
    EXPECT_EQ(second.getProjDef(), first.getProjDef());
    EXPECT_EQ(proj4DefCache.at(25832), first.getProjDef());
    EXPECT_NE(crsOf(25833).getProjDef(), first.getProjDef());
    EXPECT_EQ(proj4DefCache.size(), 2U);
}

TEST_F(Proj4CrsBindingTest, SharesTheHandleOfTheHorizontalPartOfACompoundCrs) {
    const Proj4Crs compound = crsOf(25832, 5783);
    EXPECT_EQ(compound.getProjDef(), crsOf(25832).getProjDef());
    EXPECT_EQ(compound.getAliasOrIdentifier(false), "EPSG:25832*EPSG:5783");
    EXPECT_EQ(proj4DefCache.size(), 1U);
}

TEST_F(Proj4CrsBindingTest, TakesTheHandleOfTheCacheWithoutAskingProj) {
    const ClassicProj::projPJ other = static_cast<ClassicProj::projPJ>(crsOf(4326).getProjDef());
    proj4DefCache[99] = other;
    EXPECT_EQ(crsOf(99).getProjDef(), other);
}

TEST_F(Proj4CrsBindingTest, ReadsTheEpsgFile) {
    givenEpsg("<4326> +proj=utm +zone=32 +ellps=GRS80 <>");
    EXPECT_TRUE(crsOf(4326).isCartesian());
}

TEST_F(Proj4CrsBindingTest, FailsWithItsTextEveryTime) {
    for (int attempt = 0; attempt < 2; ++attempt) expectMisconfigured([this] { crsOf(4711); }, 4711);
    expectMisconfigured([this] { crsOf(4294967295U, 5783); }, 4294967295U);
    EXPECT_TRUE(proj4DefCache.empty());
}

TEST_F(Proj4CrsBindingTest, FailsForADefinitionThatProjRefuses) {
    givenEpsg("<1> +proj=nonsense <>\n<2> +proj=utm +zone=99 +ellps=GRS80 <>\n<3> <>");
    for (const unsigned int code : {1U, 2U, 3U}) expectMisconfigured([this, code] { crsOf(code); }, code);
}

TEST_F(Proj4CrsBindingTest, FailsWithoutAnEpsgFile) {
    searchOnlyIn({});
    expectMisconfigured([this] { crsOf(4326); }, 4326);
}

TEST_F(Proj4CrsBindingTest, SucceedsOnceTheFileHasTheCode) {
    expectMisconfigured([this] { crsOf(4711); }, 4711);
    directory.write("epsg", "<4711> +proj=longlat +datum=WGS84 <>");
    EXPECT_NE(crsOf(4711).getProjDef(), nullptr);
}

TEST_F(Proj4CrsBindingTest, BindsCodeZeroLikeAnyOther) {
    expectMisconfigured([this] { crsOf(0); }, 0);
    expectMisconfigured([this] { crsOf(0, 1); }, 0);
    givenEpsg("<0> +proj=longlat +datum=WGS84 +no_defs <>");
    const Proj4Crs unknown = crsOf(0);
    EXPECT_TRUE(unknown.isUnknown());
    EXPECT_TRUE(unknown.isGeographic());
    EXPECT_EQ(unknown.getAliasOrIdentifier(false), "");
    const Proj4Crs byDefault = crsOf(0, 1);
    EXPECT_TRUE(byDefault.isDefault());
    EXPECT_EQ(byDefault.getProjDef(), unknown.getProjDef());
}

TEST_F(Proj4CrsBindingTest, HappensOnAnyThread) {
    constexpr unsigned int CODES[] = {4326, 25832, 25833, 31467};
    std::vector<std::vector<void*>> handles(4);
    std::vector<std::thread> threads;
    for (std::vector<void*>& own : handles)
        threads.emplace_back([this, &own, &CODES] {
            for (const unsigned int code : CODES) own.push_back(crsOf(code).getProjDef());
        });
    for (std::thread& thread : threads) thread.join();
    for (const std::vector<void*>& own : handles) EXPECT_EQ(own, handles.front());
    EXPECT_EQ(proj4DefCache.size(), 4U);
}

using Proj4CrsCodeTest = Proj4CrsTest;

TEST_F(Proj4CrsCodeTest, WritesTheIdentifier) {
    EXPECT_EQ(crsOf(25832).getAliasOrIdentifier(false), "EPSG:25832");
    Proj4Crs crs = crsOf(25832, 5783);
    crs.setCode(31467, 5783, true);
    EXPECT_EQ(crs.getAliasOrIdentifier(false), "EPSG:31467*EPSG:5783");
    crs.setCode(4326, 0, true);
    EXPECT_EQ(crs.getAliasOrIdentifier(false), "EPSG:4326");
}

TEST_F(Proj4CrsCodeTest, KeepsTheIdentifierForCodeZero) {
    givenEpsg("<0> +proj=longlat +datum=WGS84 <>\n<25832> +proj=utm +zone=32 +ellps=GRS80 <>");
    Proj4Crs crs = crsOf(25832);
    crs.setCode(0, 7, false);
    EXPECT_EQ(crs.getAliasOrIdentifier(false), "EPSG:25832");
    EXPECT_TRUE(crs.isDefault());
}

TEST_F(Proj4CrsCodeTest, BindsTheCrsAnew) {
    Proj4Crs crs = crsOf(25832);
    crs.setCode(4326, 0, false);
    EXPECT_EQ(crs.getProjDef(), crsOf(4326).getProjDef());
    crs.setCustomProperties(31467, 0, true, 1, 1);
    EXPECT_EQ(crs.getProjDef(), crsOf(31467).getProjDef());
}

TEST_F(Proj4CrsCodeTest, AppliesEpsgStandardsOnlyOnDemand) {
    Proj4Crs crs = crsOf(4979, 0, false);
    EXPECT_TRUE(crs.isAxisOrderEastNorthOrLonLat());
    EXPECT_EQ(crs.getDim(), 2U);
    crs.setCode(4979, 0, true);
    EXPECT_FALSE(crs.isAxisOrderEastNorthOrLonLat());
    EXPECT_EQ(crs.getDim(), 3U);
    crs.setCode(25832, 0, false);
    EXPECT_FALSE(crs.isAxisOrderEastNorthOrLonLat());
    EXPECT_EQ(crs.getDim(), 3U);
}

TEST_F(Proj4CrsCodeTest, KeepsAliasVersionAndScaleFactors) {
    Proj4Crs crs = crsOf(25832);
    crs.setAlias("alias");
    crs.setEpsgVersion("8.6");
    crs.setScaleFactors(2, 3);
    crs.setCode(31467, 5783, true);
    EXPECT_EQ(crs.getAlias(), "alias");
    EXPECT_EQ(crs.getEpsgVersion(), "8.6");
    EXPECT_EQ(crs.getPrimaryScaleFactor(), 2);
    EXPECT_EQ(crs.getCompoundScaleFactor(), 3);
}

TEST_F(Proj4CrsCodeTest, TakesItsDimensionsFromTheCodes) {
    const struct {
        unsigned int primary;
        unsigned int secondary;
        unsigned int dim;
        double compoundScaleFactor;
    } codes[] = {{25832, 0, 2, 1}, {25832, 5783, 3, 7}, {4326, 0, 2, 1}, {4979, 0, 3, 5}, {4979, 5783, 3, 5}};
    for (const auto& [primary, secondary, dim, factor] : codes) {
        Proj4Crs crs = crsOf(primary, secondary, false);
        crs.setScaleFactors(5, 7);
        crs.setDimFromCodes();
        EXPECT_EQ(crs.getDim(), dim) << primary << "*" << secondary;
        EXPECT_EQ(crs.getCompoundScaleFactor(), factor) << primary << "*" << secondary;
    }
}

TEST_F(Proj4CrsCodeTest, TakesItsAxisOrderFromTheTable) {
    EXPECT_FALSE(crsOf(4326).isAxisOrderEastNorthOrLonLat());
    EXPECT_TRUE(crsOf(25832).isAxisOrderEastNorthOrLonLat());
    EXPECT_FALSE(crsOf(31467, 25832).isAxisOrderEastNorthOrLonLat());
}

TEST_F(Proj4CrsCodeTest, PutsEastFirstForACodeThatIsNotInTheTable) {
    Proj4Crs crs = crsOf(4258, 0, false);
    crs.setAxisOrderEastNorthOrLonLat(false);
    crs.setEpsgStandardAxisOrder();
    EXPECT_TRUE(crs.isAxisOrderEastNorthOrLonLat());
}

TEST_F(Proj4CrsCodeTest, TakesCustomPropertiesAndLeavesTheDimensions) {
    Proj4Crs crs = crsOf(4979);
    crs.setCustomProperties(25832, 5783, false, 10, 100);
    EXPECT_EQ(crs.getPrimaryCode(), 25832U);
    EXPECT_EQ(crs.getSecCompoundCode(), 5783U);
    EXPECT_FALSE(crs.isAxisOrderEastNorthOrLonLat());
    EXPECT_EQ(crs.getPrimaryScaleFactor(), 10);
    EXPECT_EQ(crs.getDim(), 3U);
    EXPECT_EQ(crs.getCompoundScaleFactor(), 10);
    crs.setDimFromCodes();
    EXPECT_EQ(crs.getCompoundScaleFactor(), 100);
}

TEST_F(Proj4CrsCodeTest, StaysBoundWhenOnlyItsDimensionChanges) {
    Proj4Crs crs = crsOf(4326);
    const void* const bound = crs.getProjDef();
    crs.setDim(3);
    EXPECT_EQ(crs.getPrimaryCode(), 4979U);
    EXPECT_EQ(crs.getProjDef(), bound);
    EXPECT_NE(crsOf(4979).getProjDef(), bound);
    crs.forceDim2D();
    EXPECT_EQ(crs.getProjDef(), bound);
}

// The state after a failure: the new codes, and no binding.
class FailedCodeTest : public Proj4CrsTest {
protected:
    FailedCodeTest() {
        crs.setScaleFactors(2, 3);
        expectMisconfigured([this] { crs.setCode(4711, 5783, true); }, 4711);
    }
    Proj4Crs crs = crsOf(31467);
};

TEST_F(FailedCodeTest, LeavesTheNewCodesWithoutABinding) {
    EXPECT_EQ(crs.getProjDef(), nullptr);
    EXPECT_EQ(crs.getPrimaryCode(), 4711U);
    EXPECT_EQ(crs.getSecCompoundCode(), 5783U);
    EXPECT_EQ(crs.getAliasOrIdentifier(false), "EPSG:4711*EPSG:5783");
    EXPECT_TRUE(crs.isAxisOrderEastNorthOrLonLat());
    EXPECT_EQ(crs.getDim(), 3U);
}

TEST_F(FailedCodeTest, LeavesACrsThatCanBeAsked) {
    EXPECT_TRUE(crs.isGeographic());
    EXPECT_FALSE(crs.isCartesian());
    EXPECT_EQ(crs.getUnitEquivalentInM(), 111319.4907931134);
}

TEST_F(FailedCodeTest, LeavesACrsThatTransformsNothing) {
    const Proj4Crs other = crsOf(25832);
    double x = 9;
    double y = 50;
    double z = 0;
    EXPECT_THROW(crs.transformTo(&other, x, y, z), TransExecException);
    EXPECT_THROW(other.transformTo(&crs, x, y), TransExecException);
}

TEST_F(FailedCodeTest, DoesNotReachScaleFactorsAndAxisOrderOfCustomProperties) {
    expectMisconfigured([this] { crs.setCustomProperties(4712, 0, false, 10, 100); }, 4712);
    EXPECT_EQ(crs.getPrimaryCode(), 4712U);
    EXPECT_TRUE(crs.isAxisOrderEastNorthOrLonLat());
    EXPECT_EQ(crs.getPrimaryScaleFactor(), 2);
}

TEST_F(FailedCodeTest, CanBeMadeGood) {
    crs.setCode(25832, 0, true);
    EXPECT_EQ(crs.getProjDef(), crsOf(25832).getProjDef());
}

// Records which operations are called through their virtual slots, and the state of the CRS at each call.
class RecordingCrs : public Proj4Crs {
public:
    using Proj4Crs::Proj4Crs;
    using Proj4Crs::operator=;

    void setEpsgStandardAxisOrder() override {
        calls.push_back("axis order of " + getAliasOrIdentifier(false) +
                        (getProjDef() == boundBefore ? "" : " rebound"));
    }
    void setDimFromCodes() override { calls.push_back("dimensions of " + getAliasOrIdentifier(false)); }
    void setCode(unsigned int primary, unsigned int secondary, bool applyEpsgStandards) override {
        calls.push_back("code " + std::to_string(primary) + "*" + std::to_string(secondary) +
                        (applyEpsgStandards ? " with standards" : ""));
        Proj4Crs::setCode(primary, secondary, applyEpsgStandards);
    }
    bool isGeographic() const override { return geographic; }

    std::vector<std::string> calls;
    const void* boundBefore = getProjDef();
    bool geographic = false;
};

class VirtualCallTest : public Proj4CrsTest {
protected:
    RecordingCrs crs{creator, *theProj4Transformer, 4326, 0, true};
};

TEST_F(VirtualCallTest, AppliesTheStandardsBeforeTheBinding) {
    crs.setCode(25832, 5783, true);
    EXPECT_THAT(crs.calls, ElementsAre("code 25832*5783 with standards", "axis order of EPSG:25832*EPSG:5783",
                                       "dimensions of EPSG:25832*EPSG:5783"));
    EXPECT_NE(crs.getProjDef(), crs.boundBefore);
}

TEST_F(VirtualCallTest, AppliesTheStandardsEvenIfTheBindingFails) {
    expectMisconfigured([this] { crs.setCode(4711, 0, true); }, 4711);
    EXPECT_THAT(crs.calls,
                ElementsAre("code 4711*0 with standards", "axis order of EPSG:4711", "dimensions of EPSG:4711"));
}

TEST_F(VirtualCallTest, SetsTheCodeOfCustomPropertiesWithoutStandards) {
    crs.setCustomProperties(25832, 5783, false, 1, 1);
    EXPECT_THAT(crs.calls, ElementsAre("code 25832*5783"));
}

TEST_F(VirtualCallTest, DerivesUnitAndKindFromOneAnswer) {
    EXPECT_TRUE(crs.isCartesian());
    EXPECT_EQ(crs.getUnitEquivalentInM(), 1.0);
    crs.geographic = true;
    EXPECT_FALSE(crs.isCartesian());
    EXPECT_EQ(crs.getUnitEquivalentInM(), 111319.4907931134);
}

using Proj4CrsUnitTest = Proj4CrsTest;

TEST_F(Proj4CrsUnitTest, IsADegreeOfTheEquatorForAGeographicCrs) {
    EXPECT_TRUE(crsOf(4326).isGeographic());
    EXPECT_FALSE(crsOf(4326).isCartesian());
    EXPECT_EQ(crsOf(4326).getUnitEquivalentInM(), 111319.4907931134);
}

TEST_F(Proj4CrsUnitTest, IsTheMetreForAnyOtherWhateverItsProjUnit) {
    givenEpsg("<1> +proj=geocent +datum=WGS84 <>\n<2> +proj=lcc +lat_1=31 +lat_0=29 +units=us-ft +ellps=GRS80 <>");
    for (const unsigned int code : {1U, 2U}) {
        EXPECT_FALSE(crsOf(code).isGeographic()) << code;
        EXPECT_TRUE(crsOf(code).isCartesian()) << code;
        EXPECT_EQ(crsOf(code).getUnitEquivalentInM(), 1.0) << code;
    }
}

class Proj4CrsCopyTest : public Proj4CrsTest {
protected:
    Proj4CrsCopyTest() {
        source.setAlias("alias");
        source.setEpsgVersion("8.6");
        source.setScaleFactors(2, 3);
    }
    // Another creator and transformer show which fields assignment leaves unchanged.
    const FakeCreator otherCreator;
    const FakeTransformer otherTransformer;
    Proj4Crs source = crsOf(31467, 5783);
    Proj4Crs target{otherCreator, otherTransformer, 4326, 0, false};
};

TEST_F(Proj4CrsCopyTest, TakesEverything) {
    const std::unique_ptr<AbstractCrs> byCopy(source.copy());
    const Proj4Crs byConstructor(source);
    const AbstractCrs* const copies[] = {byCopy.get(), &byConstructor};
    for (const AbstractCrs* copy : copies) {
        EXPECT_EQ(*copy, source);
        EXPECT_EQ(copy->getAliasOrIdentifier(false), "EPSG:31467*EPSG:5783");
        EXPECT_EQ(copy->getEpsgVersion(), "8.6");
        EXPECT_EQ(copy->getPrimaryScaleFactor(), 2);
        EXPECT_EQ(copy->getCompoundScaleFactor(), 3);
        EXPECT_EQ(&copy->getCreator(), &creator);
        ASSERT_NE(dynamic_cast<const Proj4Crs*>(copy), nullptr);
        EXPECT_EQ(static_cast<const Proj4Crs*>(copy)->getProjDef(), source.getProjDef());
    }
}

TEST_F(Proj4CrsCopyTest, IsANewObject) {
    const std::unique_ptr<AbstractCrs> copy(source.copy());
    EXPECT_NE(copy.get(), &source);
    copy->setCode(4326, 0, true);
    EXPECT_EQ(source.getPrimaryCode(), 31467U);
    EXPECT_EQ(source.getProjDef(), crsOf(31467).getProjDef());
}

TEST_F(Proj4CrsCopyTest, AssignsTheBindingAndKeepsTheIdentifier) {
    EXPECT_EQ(&(target = source), &target);
    EXPECT_EQ(target, source);
    EXPECT_EQ(target.getEpsgVersion(), "8.6");
    EXPECT_EQ(target.getCompoundScaleFactor(), 3);
    EXPECT_EQ(target.getProjDef(), source.getProjDef());
    EXPECT_EQ(target.getAliasOrIdentifier(false), "EPSG:4326");
    EXPECT_EQ(&target.getCreator(), &otherCreator);
}

TEST_F(Proj4CrsCopyTest, KeepsItsOwnTransformer) {
    target = source;
    const Proj4Crs utm = crsOf(25832);
    double x = 5540000;
    double y = 3500000;
    target.transformTo(&utm, x, y);
    EXPECT_DOUBLE_EQ(x, 5540000 / 2.0);
}

TEST_F(Proj4CrsCopyTest, LeavesTheBindingWhenAssignedThroughTheBase) {
    const void* const bound = target.getProjDef();
    AbstractCrs& base = target;
    EXPECT_EQ(&(base = source), &target);
    EXPECT_EQ(target, source);
    EXPECT_EQ(target.getProjDef(), bound);
    EXPECT_EQ(target.getAliasOrIdentifier(false), "EPSG:4326");
    EXPECT_TRUE(target.isGeographic());
}

TEST_F(Proj4CrsCopyTest, MayBeAssignedToItself) {
    const Proj4Crs before(source);
    const Proj4Crs& itself = source;
    source = itself;
    static_cast<AbstractCrs&>(source) = itself;
    EXPECT_EQ(source, before);
    EXPECT_EQ(source.getProjDef(), before.getProjDef());
}

}  // namespace
}  // namespace CoordinateTransformation
