// The entries of a configuration, queries about them, and merging and copying.

#include "CoordinateTransformation/CrsConfig.h"

#include <list>
#include <memory>
#include <ostream>
#include <set>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/Failures.h"
#include "tests/support/TestConfig.h"

namespace CoordinateTransformation {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::messageOf;

static_assert(std::is_base_of_v<CrsPool, CrsConfig> && std::has_virtual_destructor_v<CrsConfig>);

TEST(AddEntryTest, AppendsACopyUnlessIdentifierAndAliasAreThere) {
    TestConfig server;
    const struct {
        CrsConfigData entry;
        bool added;
    } entries[] = {
        {CrsConfigData("EPSG:1"), true}, {CrsConfigData("A", "1"), true},  {CrsConfigData("B", "1"), true},
        {CrsConfigData("A", "2"), true}, {CrsConfigData("EPSG:1"), false}, {CrsConfigData("A", "EPSG:1"), false},
        {CrsConfigData("epsg:1"), true}, {CrsConfigData("EPSG:1 "), true},
    };
    for (const auto& [entry, added] : entries)
        EXPECT_EQ(server.config.addCrsConfigData(entry), added) << entry.getAliasOrIdentifier();
    EXPECT_THAT(server.entries(), ElementsAre("EPSG:1", "A=EPSG:1", "B=EPSG:1", "A=EPSG:2", "epsg:1", "EPSG:1 "));
}

TEST(AddEntryTest, KeepsTheSettingsOfTheFirstOfEqualEntries) {
    TestConfig server;
    server.givenConfigured({"<CRS mapToEpsgCode='1' axisOrder='EN'>A</CRS>"});
    EXPECT_FALSE(server.config.addCrsConfigData(CrsConfigData("A", "1")));
    EXPECT_TRUE(server.config.getConfiguredCrs()->back().getAxisOrderEastNorthOrLonLat().value_or(false));
}

// A copy shares the entries, so each must see those that the other adds.
TEST(AddEntryTest, ComparesWithWhatAShallowCopyHasAdded) {
    TestConfig server;
    EXPECT_TRUE(server.config.addCrsConfigData(CrsConfigData("EPSG:1")));
    auto* const copy = new CrsConfig(server.config);
    EXPECT_FALSE(copy->addCrsConfigData(CrsConfigData("EPSG:1")));
    EXPECT_TRUE(copy->addCrsConfigData(CrsConfigData("EPSG:2")));
    EXPECT_FALSE(server.config.addCrsConfigData(CrsConfigData("EPSG:2")));
    EXPECT_TRUE(server.config.addCrsConfigData(CrsConfigData("EPSG:3")));
    EXPECT_FALSE(copy->addCrsConfigData(CrsConfigData("EPSG:3")));
    EXPECT_THAT(server.entries(), ElementsAre("EPSG:1", "EPSG:2", "EPSG:3"));
    server.leaveAlive();
    delete copy;
}

TEST(AddEntryTest, ComparesWithTheEntriesThatWereAssigned) {
    TestConfig source;
    source.givenConfigured({"<CRS>1</CRS>"});
    auto* const target = new CrsConfig;
    EXPECT_TRUE(target->addCrsConfigData(CrsConfigData("EPSG:2")));
    const std::unique_ptr<const std::list<CrsConfigData>> left(target->getConfiguredCrs());
    *target = source.config;
    EXPECT_FALSE(target->addCrsConfigData(CrsConfigData("EPSG:1")));
    EXPECT_TRUE(target->addCrsConfigData(CrsConfigData("EPSG:2")));
    EXPECT_THAT(source.entries(), ElementsAre("EPSG:1", "EPSG:2"));
    source.leaveAlive();
    delete target;
}

TEST(AddEntryTest, LeavesTheCachesToTheNextInitialisation) {
    TestConfig server;
    server.givenInitialised({"<CRS>4326</CRS>"});
    EXPECT_TRUE(server.config.addCrsConfigData(CrsConfigData("EPSG:4258")));
    EXPECT_FALSE(server.config.isCrsConfigured(4258U));
    EXPECT_FALSE(server.config.isCrsConfigured("EPSG:4258"));
    server.config.reinit();
    EXPECT_TRUE(server.config.isCrsConfigured(4258U));
    EXPECT_TRUE(server.config.isCrsConfigured("EPSG:4258"));
}

TEST(PropertiesTest, KeepTheirFirstValueUnderTheirExactKey) {
    CrsConfig config;
    const std::pair<const char*, const char*> settings[] = {
        {"key", "first"}, {"key", "second"}, {"Key", ""}, {"Key", "second"}, {"", "of the empty key"}};
    EXPECT_EQ(config.getConfigProperty(""), "");
    for (const auto& [key, value] : settings) config.setConfigProperty(key, value);
    EXPECT_EQ(config.getConfigProperty("key"), "first");
    EXPECT_EQ(config.getConfigProperty("Key"), "");
    EXPECT_EQ(config.getConfigProperty("KEY"), "");
    EXPECT_EQ(config.getConfigProperty(""), "of the empty key");
}

TEST(NewConfigTest, IsEmpty) {
    const CrsConfig config;
    EXPECT_THAT(*config.getConfiguredCrs(), IsEmpty());
    EXPECT_THAT(config.getConfiguredCrsIdentifiers(), IsEmpty());
    EXPECT_FALSE(config.isCrsConfigured(0U));
    EXPECT_FALSE(config.isCrsConfigured(""));
    EXPECT_EQ(config.getFromNameCache("", false), nullptr);
    EXPECT_EQ(config.getFromCodeCache("", false), nullptr);
}

TEST(IsConfiguredTest, IsFalseBeforeInitialisation) {
    TestConfig server;
    server.givenConfigured({"<CRS>4326</CRS>", "<CRS mapToEpsgCode='31467'>GK3</CRS>"});
    EXPECT_FALSE(server.config.isCrsConfigured(4326U));
    EXPECT_FALSE(server.config.isCrsConfigured("EPSG:4326"));
    EXPECT_FALSE(server.config.isCrsConfigured("GK3"));
    EXPECT_THAT(server.config.getConfiguredCrsIdentifiers(), IsEmpty());
}

TEST(IsConfiguredTest, KnowsThePrimaryCodesOfTheEntriesAfterwards) {
    TestConfig server;
    server.givenInitialised({"<CRS>4326</CRS>", "<CRS mapToEpsgCode='EPSG:27700*EPSG:5701'>OSGB</CRS>"});
    EXPECT_TRUE(server.config.isCrsConfigured(4326U));
    EXPECT_TRUE(server.config.isCrsConfigured(27700U));
    EXPECT_FALSE(server.config.isCrsConfigured(5701U));
    EXPECT_FALSE(server.config.isCrsConfigured(0U));
}

TEST(IsConfiguredTest, MatchesNamesExactly) {
    TestConfig server;
    server.givenInitialised({"<CRS>4326</CRS>"});
    EXPECT_TRUE(server.config.isCrsConfigured("urn:ogc:def:crs:EPSG::4326"));
    for (const char* const name : {"URN:OGC:DEF:CRS:EPSG::4326", "urn:ogc:def:crs:EPSG::4326 ", " 4326", "4326 ",
                                   "epsg:4326", "EPSG:432", "EPSG:43266", ""})
        EXPECT_FALSE(server.config.isCrsConfigured(name)) << name;
}

TEST(IsConfiguredTest, HoldsCodesOfAllSizes) {
    TestConfig server;
    server.givenInitialised({"<CRS>2147483647</CRS>", "<CRS>2147483648</CRS>", "<CRS>4294967295</CRS>"});
    for (const unsigned int code : {2147483647U, 2147483648U, 4294967295U})
        EXPECT_TRUE(server.config.isCrsConfigured(code)) << code;
    EXPECT_FALSE(server.config.isCrsConfigured(2147483649U));
    EXPECT_TRUE(server.config.isCrsConfigured("urn:ogc:def:crs:EPSG::4294967295"));
    EXPECT_NE(server.ofCode("2147483648"), nullptr);
    EXPECT_EQ(server.ofCode("-2147483648"), nullptr);
}

TEST(IdentifiersTest, AreCodesIdentifiersAndAliasesInOrder) {
    TestConfig server;
    server.givenInitialised({"<CRS>4326</CRS>", "<CRS>CRS:84</CRS>", "<CRS mapToEpsgCode='31467'>GK3</CRS>",
                             "<CRS>EPSG:27700*EPSG:5701</CRS>"});
    EXPECT_THAT(
        server.config.getConfiguredCrsIdentifiers(),
        ElementsAre("27700", "31467", "4326", "CRS:84", "EPSG:27700*EPSG:5701", "EPSG:31467", "EPSG:4326", "GK3"));
}

class EntryForTest : public testing::Test {
protected:
    // The entry in the notation of `entries`; "" for null.
    static std::string written(const CrsConfigData* entry) {
        if (entry == nullptr) return "";
        return (entry->isMapped() ? entry->getAlias() + "=" : "") + entry->getIdentifier();
    }
    // The entry of the CRS that a request names `name`.
    std::string entryOf(const std::string& name) const {
        const Crs crs = server.creator->createFromName(name, false, false);
        return written(server.config.getEntryFor(*crs.get()));
    }
    std::string entryOf(unsigned int primary, unsigned int secondary, const std::string& alias) const {
        const std::unique_ptr<AbstractCrs> crs(server.creator->createFromCode(primary, secondary, true));
        crs->setAlias(alias);
        return written(server.config.getEntryFor(*crs));
    }

    ConfigWith<FailingCreator> server;
};

TEST_F(EntryForTest, IsTheSameForEverySpelling) {
    server.givenInitialised({"<CRS>4326</CRS>", "<CRS>EPSG:27700*EPSG:5701</CRS>"});
    for (const char* const name :
         {"EPSG:4326", "4326", "urn:ogc:def:crs:EPSG::4326", "urn:ogc:def:crs:EPSG:7.1:4326",
          "http://www.opengis.net/def/crs/EPSG/0/4326", "http://www.opengis.net/gml/srs/epsg.xml#4326",
          "urn:EPSG:geographicCRS:4326", "EPSG:4326;NE;1"})
        EXPECT_EQ(entryOf(name), "EPSG:4326") << name;
    for (const char* const name :
         {"27700*5701", "urn:ogc:def:crs,crs:EPSG:1:27700,crs:EPSG:1:5701", "EPSG:27700*EPSG:5701"})
        EXPECT_EQ(entryOf(name), "EPSG:27700*EPSG:5701") << name;
}

TEST_F(EntryForTest, IsTheOneWithTheAlias) {
    server.givenInitialised({"<CRS>4326</CRS>", "<CRS>CRS:84</CRS>", "<CRS mapToEpsgCode='4326'>WGS84</CRS>",
                             "<CRS mapToEpsgCode='31467'>GK3</CRS>"});
    for (const char* const name : {"CRS:84", "WGS84"}) EXPECT_EQ(entryOf(name), name + std::string("=EPSG:4326"));
    EXPECT_EQ(entryOf("GK3"), "GK3=EPSG:31467");
}

TEST_F(EntryForTest, NeedsTheCodesBesideTheAlias) {
    server.givenInitialised({"<CRS mapToEpsgCode='31467'>GK</CRS>", "<CRS mapToEpsgCode='31468'>GK</CRS>"});
    EXPECT_EQ(entryOf(31467, 0, "GK"), "GK=EPSG:31467");
    EXPECT_EQ(entryOf(31468, 0, "GK"), "GK=EPSG:31468");
    EXPECT_EQ(entryOf(31469, 0, "GK"), "");
}

TEST_F(EntryForTest, IsTheOneWithoutAliasForAnAliasThatIsNotConfigured) {
    server.givenInitialised({"<CRS mapToEpsgCode='4326'>WGS84</CRS>", "<CRS>4326</CRS>"});
    EXPECT_EQ(entryOf("epsg.xml#4326"), "EPSG:4326");
    EXPECT_EQ(entryOf("EPSG:4326"), "EPSG:4326");
}

TEST_F(EntryForTest, IsTheFirstMappedOneWhenAllAreMapped) {
    server.givenInitialised({"<CRS mapToEpsgCode='4326'>Z</CRS>", "<CRS mapToEpsgCode='4326'>A</CRS>"});
    EXPECT_EQ(entryOf("EPSG:4326"), "Z=EPSG:4326");
}

TEST_F(EntryForTest, PrefersTheSecondaryCodeToTheAlias) {
    server.givenInitialised({"<CRS mapToEpsgCode='EPSG:31467*EPSG:5783'>GK3</CRS>", "<CRS>31467</CRS>",
                             "<CRS>31468</CRS>", "<CRS mapToEpsgCode='EPSG:31468*EPSG:5783'>GK4</CRS>"});
    EXPECT_EQ(entryOf(31467, 0, "GK3"), "EPSG:31467");
    EXPECT_EQ(entryOf(31467, 5783, ""), "GK3=EPSG:31467*EPSG:5783");
    EXPECT_EQ(entryOf(31468, 0, "GK4"), "EPSG:31468");
    EXPECT_EQ(entryOf(31468, 5783, ""), "GK4=EPSG:31468*EPSG:5783");
}

// The primary code alone decides whether the server offers a CRS.
TEST_F(EntryForTest, IsThatOfThePrimaryCodeWhenTheCompoundIsNotConfigured) {
    server.givenInitialised({"<CRS>27700</CRS>", "<CRS>EPSG:31467*EPSG:5783</CRS>"});
    EXPECT_EQ(entryOf("27700*5701"), "EPSG:27700");
    EXPECT_EQ(entryOf("EPSG:31467"), "EPSG:31467*EPSG:5783");
}

TEST_F(EntryForTest, IsNullForACrsThatIsNotConfiguredOrNotYet) {
    server.givenConfigured({"<CRS>4326</CRS>"});
    EXPECT_EQ(entryOf("EPSG:4326"), "");
    server.config.init();
    EXPECT_EQ(entryOf("EPSG:4258"), "");
    EXPECT_EQ(entryOf(0, 0, ""), "");
}

TEST_F(EntryForTest, IsTheEntryOfTheListForAsLongAsTheConfigurationLives) {
    server.givenInitialised({"<CRS>4326</CRS>"});
    const CrsConfigData* const entry = server.config.getEntryFor(*server.named("4326"));
    EXPECT_EQ(entry, &server.config.getConfiguredCrs()->front());
    server.givenConfigured({"<CRS>25832</CRS>"});
    server.config.reinit();
    EXPECT_EQ(entryOf("EPSG:25832"), "EPSG:25832");
    EXPECT_EQ(server.config.getEntryFor(*server.named("4326")), entry);
}

TEST_F(EntryForTest, IsNullAfterAFailedReinitialisation) {
    server.givenInitialised({"<CRS>4326</CRS>"});
    server.creator->failsToInitialise = true;
    EXPECT_THROW(server.config.reinit(), std::runtime_error);
    EXPECT_EQ(entryOf("EPSG:4326"), "");
}

struct MergeCase {
    bool thisInitialised;
    bool otherInitialised;
};

void PrintTo(const MergeCase& mergeCase, std::ostream* stream) {
    *stream << (mergeCase.thisInitialised ? "initialised" : "plain") << " with "
            << (mergeCase.otherInitialised ? "initialised" : "plain");
}

class MergeTest : public testing::TestWithParam<MergeCase> {
protected:
    MergeTest() {
        server.givenConfigured({"<CRS>1</CRS>", "<CRS mapToEpsgCode='2'>A</CRS>", "<CRS>3</CRS>"});
        other.givenConfigured({"<CRS>4</CRS>", "<CRS>3</CRS>", "<CRS mapToEpsgCode='2'>B</CRS>"});
        if (GetParam().thisInitialised) server.config.init();
        if (GetParam().otherInitialised) other.config.init();
        server.config.setConfigProperty("key", "this");
        other.config.setConfigProperty("other key", "other");
        server.config.merge(other.config);
    }

    // Either all entries of both are registered, or none; earlier CRS are made again.
    static void expectRegistered(const TestConfig& merged, bool initialised) {
        EXPECT_EQ(merged.journal.initialisations(), initialised ? 2 : 0);
        EXPECT_EQ(merged.journal.liveAtInit, 0U);
        EXPECT_THAT(merged.journal.identifiersAtInit, IsEmpty());
        for (const char* const name : {"EPSG:1", "A", "EPSG:3", "EPSG:4", "B"})
            EXPECT_EQ(merged.config.isCrsConfigured(name), initialised) << name;
        for (const unsigned int code : {1U, 2U, 3U, 4U}) EXPECT_EQ(merged.config.isCrsConfigured(code), initialised);
    }

    TestConfig server;
    TestConfig other;
};

TEST_P(MergeTest, GivesBothTheUnionInTheirOwnOrder) {
    EXPECT_THAT(server.entries(), ElementsAre("EPSG:1", "A=EPSG:2", "EPSG:3", "EPSG:4", "B=EPSG:2"));
    EXPECT_THAT(other.entries(), ElementsAre("EPSG:4", "EPSG:3", "B=EPSG:2", "EPSG:1", "A=EPSG:2"));
}

TEST_P(MergeTest, ReinitialisesWhatWasInitialised) {
    expectRegistered(server, GetParam().thisInitialised);
    expectRegistered(other, GetParam().otherInitialised);
}

TEST_P(MergeTest, KeepsThePropertiesApart) {
    EXPECT_EQ(server.config.getConfigProperty("other key"), "");
    EXPECT_EQ(other.config.getConfigProperty("key"), "");
}

INSTANTIATE_TEST_SUITE_P(Combinations, MergeTest,
                         testing::Values(MergeCase{false, false}, MergeCase{false, true}, MergeCase{true, false},
                                         MergeCase{true, true}));

TEST(MergeWithItselfTest, AddsNothingAndReinitialisesOncePerSide) {
    TestConfig server;
    server.givenConfigured({"<CRS>1</CRS>", "<CRS>2</CRS>"});
    server.config.merge(server.config);
    EXPECT_THAT(server.entries(), ElementsAre("EPSG:1", "EPSG:2"));
    EXPECT_EQ(server.journal.initialisations(), 0);
    server.config.init();
    const std::size_t held = server.journal.live.count();
    server.config.merge(server.config);
    EXPECT_EQ(server.journal.initialisations(), 3);
    EXPECT_EQ(server.journal.live.count(), held);
    EXPECT_TRUE(server.config.isCrsConfigured("EPSG:2"));
}

class MergeFailureTest : public testing::Test {
protected:
    MergeFailureTest() {
        server.givenInitialised({"<CRS>1</CRS>"});
        other.givenInitialised({"<CRS>2</CRS>"});
    }
    std::string messageOfMerge() {
        return messageOf<std::runtime_error>([this] { server.config.merge(other.config); });
    }

    ConfigWith<FailingCreator> server;
    ConfigWith<FailingCreator> other;
};

TEST_F(MergeFailureTest, OfTheOtherSideComesBeforeAnythingIsTakenFromIt) {
    other.creator->failingCode = 1;
    EXPECT_EQ(messageOfMerge(), "no such code");
    EXPECT_THAT(other.entries(), ElementsAre("EPSG:2", "EPSG:1"));
    EXPECT_THAT(server.entries(), ElementsAre("EPSG:1"));
    EXPECT_EQ(server.journal.initialisations(), 1);
    EXPECT_TRUE(server.config.isCrsConfigured("EPSG:1"));
}

TEST_F(MergeFailureTest, OfThisSideLeavesBothWithTheUnionAndCanBeMadeGood) {
    server.creator->failingCode = 2;
    EXPECT_EQ(messageOfMerge(), "no such code");
    EXPECT_THAT(server.entries(), ElementsAre("EPSG:1", "EPSG:2"));
    EXPECT_THAT(other.entries(), ElementsAre("EPSG:2", "EPSG:1"));
    EXPECT_TRUE(other.config.isCrsConfigured("EPSG:1"));
    server.creator->failingCode.reset();
    server.config.merge(other.config);
    EXPECT_TRUE(server.config.isCrsConfigured("EPSG:1"));
    EXPECT_TRUE(server.config.isCrsConfigured("EPSG:2"));
}

class ShallowCopyTest : public testing::Test {
protected:
    ShallowCopyTest() {
        source.givenInitialised({"<CRS>4326</CRS>", "<CRS>CRS:84</CRS>"});
        source.config.setConfigProperty("key", "value");
    }

    void expectIsACopy(const ExposedConfig& copy) {
        EXPECT_EQ(copy.getConfiguredCrs(), source.config.getConfiguredCrs());
        EXPECT_EQ(&copy.getCreator(), source.creator);
        for (const char* const name : {"EPSG:4326", "CRS:84", "urn:ogc:def:crs:EPSG::4326"})
            EXPECT_EQ(copy.getFromNameCache(name, true), source.named(name));
        EXPECT_EQ(copy.getFromCodeCache("4326", true), source.ofCode("4326"));
        EXPECT_TRUE(copy.isCrsConfigured(4326U));
        EXPECT_EQ(copy.getConfiguredCrsIdentifiers(), source.config.getConfiguredCrsIdentifiers());
        EXPECT_EQ(copy.getConfigProperty("key"), "value");
    }

    // The destructor of the copy releases the objects that both share.
    void destroyInsteadOfTheSource(std::unique_ptr<ExposedConfig> copy) {
        source.leaveAlive();
        copy.reset();
        EXPECT_EQ(source.journal.live.count(), 0U);
        EXPECT_TRUE(source.journal.liveWhenDeleted.has_value());
    }

    TestConfig source;
};

TEST_F(ShallowCopyTest, SharesEntriesCreatorAndCrsWhenConstructed) {
    auto copy = std::make_unique<ExposedConfig>(source.config);
    expectIsACopy(*copy);
    destroyInsteadOfTheSource(std::move(copy));
}

TEST_F(ShallowCopyTest, SharesThemWhenAssigned) {
    auto copy = std::make_unique<ExposedConfig>();
    const std::unique_ptr<const std::list<CrsConfigData>> ownList(copy->getConfiguredCrs());
    *copy = source.config;
    expectIsACopy(*copy);
    destroyInsteadOfTheSource(std::move(copy));
}

TEST_F(ShallowCopyTest, SharesEntriesAddedLaterAndHasPropertiesOfItsOwn) {
    auto copy = std::make_unique<ExposedConfig>(source.config);
    copy->addCrsConfigData(CrsConfigData("EPSG:4258"));
    copy->setConfigProperty("other key", "other value");
    EXPECT_EQ(source.entries().size(), 3U);
    EXPECT_EQ(source.config.getConfigProperty("other key"), "");
    destroyInsteadOfTheSource(std::move(copy));
}

TEST_F(ShallowCopyTest, LeavesTheSourceToBeDestroyedInstead) {
    static const ExposedConfig* leftAlive;
    leftAlive = new ExposedConfig(source.config);
    source.destroy();
    EXPECT_EQ(source.journal.live.count(), 0U);
    EXPECT_TRUE(source.journal.liveWhenDeleted.has_value());
    EXPECT_EQ(leftAlive->getConfigProperty("key"), "value");
}

}  // namespace
}  // namespace CoordinateTransformation
