#include "CoordinateTransformation/Proj4CrsCreator.h"

#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CoordinateTransformation/CrsConfig.h"
#include "CoordinateTransformation/CrsNotConfigured.h"
#include "CoordinateTransformation/CrsUnknownSyntaxOrAlias.h"
#include "CoordinateTransformation/Misconfigured.h"
#include "CoordinateTransformation/Proj4Crs.h"
#include "proj/AxisOrderTable.h"
#include "tests/support/Failures.h"
#include "tests/support/FakeCrs.h"
#include "tests/support/FreshProj4Settings.h"

namespace CoordinateTransformation {
namespace {

using testing::Return;
using testing::ReturnNull;
using testing::StrictMock;
using TestSupport::messageOf;

constexpr char PROJ_DIRECTORY[] = COORDTRANS_SOURCE_DIR "/data/proj";

class MockConfig : public CrsConfig {
public:
    MOCK_METHOD(const AbstractCrs*, getFromNameCache, (const std::string&, bool), (const, override));
    MOCK_METHOD(const AbstractCrs*, getFromCodeCache, (const std::string&, bool), (const, override));
};

class Proj4CrsCreatorPoolTest : public testing::Test {
protected:
    TestSupport::FakeTransformer transformer;
    StrictMock<MockConfig> config;
    Proj4CrsCreator creator{config};
    TestSupport::FakeCrs crs{creator, transformer, 4326, 0};
};

TEST_F(Proj4CrsCreatorPoolTest, AsksItsConfigurationForNames) {
    EXPECT_CALL(config, getFromNameCache("CRS:84", false)).WillOnce(Return(&crs));
    EXPECT_CALL(config, getFromNameCache("CRS:84", true)).WillOnce(ReturnNull());
    EXPECT_EQ(creator.getFromNameCache("CRS:84", false), &crs);
    EXPECT_EQ(creator.getFromNameCache("CRS:84", true), nullptr);
}

TEST_F(Proj4CrsCreatorPoolTest, AsksItsConfigurationForCodeKeys) {
    EXPECT_CALL(config, getFromCodeCache("31467*5783", false)).WillOnce(Return(&crs));
    EXPECT_CALL(config, getFromCodeCache("31467*5783", true)).WillOnce(ReturnNull());
    EXPECT_EQ(creator.getFromCodeCache("31467*5783", false), &crs);
    EXPECT_EQ(creator.getFromCodeCache("31467*5783", true), nullptr);
}

TEST_F(Proj4CrsCreatorPoolTest, BorrowsRequestedNamesFromItsConfiguration) {
    EXPECT_CALL(config, getFromNameCache("CRS:84", false)).WillOnce(Return(&crs));
    const Crs handle = creator.createFromName("CRS:84", true, true);
    EXPECT_EQ(handle.get(), &crs);
    EXPECT_TRUE(handle.isHoldingConst());
}

class Proj4CrsCreatorTest : public testing::Test {
protected:
    using CrsPtr = std::unique_ptr<const AbstractCrs>;

    Proj4CrsCreatorTest() {
        config->setConfigProperty("Proj4ConfigDir", PROJ_DIRECTORY);
        config->init();
    }

    void givenConfigured(const std::string& name) {
        config->addCrsConfigData(CrsConfigData(name));
        config->init();
    }
    const CrsCreator& creator() const { return config->getCreator(); }
    CrsPtr fromCode(unsigned int primary, unsigned int secondary, bool standardAxisOrder) const {
        return CrsPtr(creator().createFromCode(primary, secondary, standardAxisOrder));
    }
    void expectNotConfigured(const std::string& name) const {
        EXPECT_EQ(messageOf<CrsNotConfigured>([&] { creator().createFromName(name, true, true); }),
                  "The requested CRS " + name + " is not set up in the configuration");
        EXPECT_EQ(creator().createFromName(name, false, true).get(), nullptr);
    }

    FreshProj4Settings settings;
    std::unique_ptr<CrsConfig> config{CrsConfig::createConfigFromId("proj4")};
};

TEST_F(Proj4CrsCreatorTest, MakesACrsForItsCodes) {
    const struct {
        unsigned int primary;
        unsigned int secondary;
        const char* identifier;
        unsigned int dimension;
        bool eastNorth;
    } made[] = {
        {4326, 0, "EPSG:4326", 2, false},
        {4979, 0, "EPSG:4979", 3, false},
        {25832, 0, "EPSG:25832", 2, true},
        {25832, 5783, "EPSG:25832*EPSG:5783", 3, true},
        {31467, 5783, "EPSG:31467*EPSG:5783", 3, false},
    };
    for (const auto& row : made) {
        SCOPED_TRACE(row.identifier);
        const CrsPtr crs = fromCode(row.primary, row.secondary, true);
        EXPECT_NE(dynamic_cast<const Proj4Crs*>(crs.get()), nullptr);
        EXPECT_EQ(crs->getPrimaryCode(), row.primary);
        EXPECT_EQ(crs->getSecCompoundCode(), row.secondary);
        EXPECT_EQ(crs->getAliasOrIdentifier(true), row.identifier);
        EXPECT_EQ(crs->getDim(), row.dimension);
        EXPECT_EQ(crs->isAxisOrderEastNorthOrLonLat(), row.eastNorth);
        EXPECT_EQ(&crs->getCreator(), &creator());
    }
}

TEST_F(Proj4CrsCreatorTest, LeavesAxisOrderAndDimensionAloneUnlessAskedForTheStandardOnes) {
    for (const auto& [primary, secondary] : {std::pair(4326U, 0U), {4979U, 0U}, {25832U, 5783U}}) {
        const CrsPtr crs = fromCode(primary, secondary, false);
        EXPECT_TRUE(crs->isAxisOrderEastNorthOrLonLat()) << primary;
        EXPECT_EQ(crs->getDim(), 2U) << primary;
    }
}

TEST_F(Proj4CrsCreatorTest, AcceptsASafeCurieWhereTheConfigurationDoes) {
    givenConfigured("EPSG:4326");
    EXPECT_THROW(creator().createFromName("[EPSG:4326]", true, true), CrsUnknownSyntaxOrAlias);
    config->setConfigProperty("AcceptSafeCuries", "true");
    const Crs crs = creator().createFromName("[EPSG:4326]", true, true);
    EXPECT_EQ(crs->getPrimaryCode(), 4326U);
    EXPECT_FALSE(crs->isAxisOrderEastNorthOrLonLat());
    EXPECT_EQ(crs->getAlias(), "");
    EXPECT_THROW(creator().createFromName("[EPSG:4326", true, true), CrsUnknownSyntaxOrAlias);
    EXPECT_THROW(creator().createFromName("[EPSG:abc]", true, true), CrsUnknownSyntaxOrAlias);
    EXPECT_THROW(creator().createFromName("[EPSG:25832]", true, true), CrsNotConfigured);
}

TEST_F(Proj4CrsCreatorTest, AcceptsSafeCuriesForNoOtherValueThanTrue) {
    for (const char* const value : {"", "false", "TRUE", "1", " true"}) {
        CrsConfig other;
        other.setConfigProperty("AcceptSafeCuries", value);
        EXPECT_EQ(Proj4CrsCreator(other).createFromName("[EPSG:4326]", false, false).get(), nullptr) << value;
    }
}

TEST_F(Proj4CrsCreatorTest, ExplainsANameAsTheConfigurationWouldTakeIt) {
    EXPECT_EQ(creator().explainName("[EPSG:4326]").fault, NameExplanation::Fault::BAD_SYNTAX);
    config->setConfigProperty("AcceptSafeCuries", "true");
    EXPECT_EQ(creator().explainName("[EPSG:4326]").text, "a safe CURIE for EPSG:4326");
}

TEST_F(Proj4CrsCreatorTest, MakesANewObjectEveryTime) {
    const CrsPtr first = fromCode(4326, 0, true);
    const CrsPtr second = fromCode(4326, 0, true);
    EXPECT_NE(first.get(), second.get());
    EXPECT_TRUE(*first == *second);
}

// Eastings of UTM zone 32 are 500 km at 9 degrees east, and northings 0 at the equator.
TEST_F(Proj4CrsCreatorTest, MakesCrsThatTransformThroughProj) {
    double x = 9;
    double y = 0;
    fromCode(4326, 0, false)->transformTo(fromCode(25832, 0, false).get(), x, y);
    EXPECT_NEAR(x, 500000, 1e-6);
    EXPECT_NEAR(y, 0, 1e-6);
}

TEST_F(Proj4CrsCreatorTest, LetsTheFaultOfACodeThatProjDoesNotKnowPass) {
    const std::string message =
        "Failed to configure CRS 999999. Please ensure that the CRS is defined properly in the proj4 configuration for "
        "QuarvelServer.";
    for (const bool throwOnFailure : {false, true})
        EXPECT_EQ(messageOf<Misconfigured>([&] { creator().createFromName("EPSG:999999", throwOnFailure, true); }),
                  message);
    EXPECT_THROW(fromCode(999999, 0, false), Misconfigured);
    EXPECT_THROW(fromCode(999999, 4326, true), Misconfigured);
}

TEST_F(Proj4CrsCreatorTest, MakesTheDefaultAndTheUnknownCrs) {
    // They have easting first, even if the axis-order table has an entry for code 0.
    getAxisOrderTable()[0] = false;
    const CrsPtr standard(creator().createDefault());
    const CrsPtr unknown(creator().createUnknown());
    EXPECT_TRUE(standard->isDefault());
    EXPECT_TRUE(unknown->isUnknown());
    EXPECT_EQ(standard->getSecCompoundCode(), 1U);
    EXPECT_EQ(unknown->getSecCompoundCode(), 0U);
    for (const AbstractCrs* const crs : {standard.get(), unknown.get()}) {
        EXPECT_NE(dynamic_cast<const Proj4Crs*>(crs), nullptr);
        EXPECT_EQ(crs->getPrimaryCode(), 0U);
        EXPECT_EQ(crs->getAliasOrIdentifier(true), "");
        EXPECT_EQ(crs->getDim(), 2U);
        EXPECT_TRUE(crs->isAxisOrderEastNorthOrLonLat());
        EXPECT_EQ(&crs->getCreator(), &creator());
    }
}

class CountingCreator : public Proj4CrsCreator {
public:
    using Proj4CrsCreator::isCrsAllowed;
    using Proj4CrsCreator::Proj4CrsCreator;

    AbstractCrs* createFromCode(unsigned int, unsigned int, bool) const override {
        ++asked;
        return nullptr;
    }

    mutable int asked = 0;
};

TEST_F(Proj4CrsCreatorTest, MakesTheDefaultAndTheUnknownCrsWithoutCreateFromCode) {
    const CountingCreator counting(*config);
    const CrsPtr standard(counting.createDefault());
    const CrsPtr unknown(counting.createUnknown());
    EXPECT_NE(standard, nullptr);
    EXPECT_NE(unknown, nullptr);
    EXPECT_EQ(counting.asked, 0);
}

TEST_F(Proj4CrsCreatorTest, MakesRequestedCrsThroughCreateFromCode) {
    const CountingCreator counting(*config);
    EXPECT_EQ(counting.createFromName("EPSG:4326", false, false).get(), nullptr);
    EXPECT_EQ(counting.asked, 1);
}

TEST_F(Proj4CrsCreatorTest, AllowsWhatIsConfiguredByItsPrimaryCodeAlone) {
    givenConfigured("EPSG:25832*EPSG:4326");
    EXPECT_NE(creator().createFromName("25832", true, true).get(), nullptr);
    EXPECT_NE(creator().createFromName("EPSG:25832*EPSG:5783", true, true).get(), nullptr);
    EXPECT_NE(creator().createFromName("EPSG:25832", true, true).get(), nullptr);
    expectNotConfigured("EPSG:4326");
    expectNotConfigured("EPSG:31467*EPSG:25832");
    expectNotConfigured("EPSG:31467*EPSG:4326");
    EXPECT_NE(creator().createFromName("EPSG:4326", true, false).get(), nullptr);
}

TEST_F(Proj4CrsCreatorTest, LooksAtThePrimaryCodeOfTheCrsItIsGiven) {
    givenConfigured("EPSG:25832");
    const CountingCreator counting(*config);
    const TestSupport::FakeTransformer transformer;
    const auto isAllowed = [&](unsigned int primary, unsigned int secondary) {
        const TestSupport::FakeCrs crs(counting, transformer, primary, secondary);
        return counting.isCrsAllowed(&crs);
    };
    EXPECT_TRUE(isAllowed(25832, 0));
    EXPECT_TRUE(isAllowed(25832, 5783));
    EXPECT_FALSE(isAllowed(4326, 0));
    EXPECT_FALSE(isAllowed(4326, 25832));
    EXPECT_FALSE(isAllowed(0, 25832));
}

TEST_F(Proj4CrsCreatorTest, AnswersConfiguredNamesWithTheSharedObject) {
    givenConfigured("EPSG:25832");
    const AbstractCrs* const shared = creator().getFromNameCache("EPSG:25832", true);
    const Crs handle = creator().createFromName("EPSG:25832", true, true);
    EXPECT_EQ(handle.get(), shared);
    EXPECT_TRUE(handle.isHoldingConst());
    EXPECT_EQ(creator().getFromCodeCache("25832", true), shared);
    EXPECT_EQ(creator().getFromNameCache("epsg:25832", false), nullptr);
    EXPECT_THROW(creator().getFromCodeCache("9999", true), CrsNotConfigured);
}

}  // namespace
}  // namespace CoordinateTransformation
