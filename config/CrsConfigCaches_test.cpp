// The names under which CRS are registered, the entry that keeps a name, and the owner of each object.

#include <cstddef>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CoordinateTransformation/CrsConfig.h"
#include "CoordinateTransformation/CrsNotConfigured.h"
#include "QSHelpers/UnexpectedException.h"
#include "tests/support/Failures.h"
#include "tests/support/TestConfig.h"

namespace CoordinateTransformation {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::reportOf;
using Names = std::vector<std::string>;

// The names of a configured CRS in three groups: those of the CRS itself, and those of the object of each pair of URNs.
struct ConfiguredCrs {
    const char* element;
    const char* codeKey;
    Names ofTheCrs;
    Names ofVersion612;
    Names ofNoVersion;
    // Similar spellings that are not registered.
    Names absent;
    std::vector<std::string> identifiers;
};

void PrintTo(const ConfiguredCrs& configured, std::ostream* stream) { *stream << configured.element; }

class RegisteredNamesTest : public testing::TestWithParam<ConfiguredCrs> {
protected:
    RegisteredNamesTest() { server.givenInitialised({GetParam().element}); }

    const AbstractCrs* expectOneObject(const Names& names) const {
        const AbstractCrs* const crs = server.config.getFromNameCache(names.front(), true);
        for (const std::string& name : names) {
            EXPECT_EQ(server.named(name), crs) << name;
            EXPECT_TRUE(server.config.isCrsConfigured(name)) << name;
        }
        return crs;
    }

    TestConfig server;
};

TEST_P(RegisteredNamesTest, LeadToTheCrs) {
    EXPECT_EQ(expectOneObject(GetParam().ofTheCrs), server.config.getFromCodeCache(GetParam().codeKey, true));
}

TEST_P(RegisteredNamesTest, LeadToOneObjectForEachPairOfUrns) {
    const AbstractCrs* const crs = server.config.getFromCodeCache(GetParam().codeKey, true);
    const AbstractCrs* const ofVersion612 = expectOneObject(GetParam().ofVersion612);
    const AbstractCrs* const ofNoVersion = expectOneObject(GetParam().ofNoVersion);
    EXPECT_NE(ofVersion612, crs);
    EXPECT_NE(ofNoVersion, ofVersion612);
}

TEST_P(RegisteredNamesTest, AreNoOthers) {
    for (const std::string& name : GetParam().absent) EXPECT_EQ(server.named(name), nullptr) << name;
}

TEST_P(RegisteredNamesTest, GoWithOneCodeKey) {
    const auto isCodeKey = [this](const std::string& name) {
        return server.config.getFromCodeCache(name, false) != nullptr;
    };
    for (const Names& names : {GetParam().ofTheCrs, GetParam().ofVersion612, GetParam().ofNoVersion, GetParam().absent})
        for (const std::string& name : names) EXPECT_EQ(isCodeKey(name), name == GetParam().codeKey) << name;
}

TEST_P(RegisteredNamesTest, GoWithTheIdentifiers) {
    EXPECT_THAT(server.config.getConfiguredCrsIdentifiers(), testing::ElementsAreArray(GetParam().identifiers));
}

INSTANTIATE_TEST_SUITE_P(
    Entries, RegisteredNamesTest,
    testing::Values(
        ConfiguredCrs{
            "<CRS>4326</CRS>",
            "4326",
            {"EPSG:4326", "urn:ogc:def:crs:EPSG::4326", "EPSG:4326;NE;1", "4326", "urn:EPSG:geographicCRS:4326"},
            {"urn:ogc:def:crs:EPSG:6.12:4326", "urn:x-ogc:def:crs:EPSG:6.12:4326"},
            {"urn:ogc:def:crs,crs:EPSG::4326"},
            {"epsg:4326", "EPSG:4326;EN;1", "EPSG:4326;NE;1;1", "4326*0", "urn:x-ogc:def:crs:EPSG::4326",
             "urn:ogc:def:crs,crs:EPSG:6.12:4326", "urn:ogc:def:crs:epsg::4326",
             "http://www.opengis.net/def/crs/EPSG/0/4326", "URN:OGC:DEF:CRS:EPSG::4326", "CRS:84", ""},
            {"4326", "EPSG:4326"}},
        ConfiguredCrs{
            "<CRS mapToEpsgCode='31467'>GK3</CRS>",
            "31467",
            {"EPSG:31467", "urn:ogc:def:crs:EPSG::31467", "EPSG:31467;NE;1", "31467", "urn:EPSG:geographicCRS:31467"},
            {"urn:ogc:def:crs:EPSG:6.12:31467", "urn:x-ogc:def:crs:EPSG:6.12:31467"},
            {"urn:ogc:def:crs,crs:EPSG::31467"},
            {"gk3", "GK3;EN;1", "urn:EPSG:geographicCRS:GK3", "urn:ogc:def:crs:EPSG::GK3"},
            {"31467", "EPSG:31467", "GK3"}},
        ConfiguredCrs{"<CRS>EPSG:31467*EPSG:5783</CRS>",
                      "31467*5783",
                      {"EPSG:31467*EPSG:5783", "urn:ogc:def:crs,crs:EPSG::31467,crs:EPSG::5783",
                       "EPSG:31467*EPSG:5783;NE;1;1", "31467*5783", "urn:EPSG:geographicCRS:31467*5783"},
                      {"urn:ogc:def:crs:EPSG:6.12:31467,crs:EPSG:6.12:5783",
                       "urn:x-ogc:def:crs:EPSG:6.12:31467,crs:EPSG:6.12:5783"},
                      {"urn:ogc:def:crs:EPSG::31467,crs:EPSG::5783"},
                      {"31467", "EPSG:31467", "5783", "EPSG:5783", "urn:EPSG:geographicCRS:31467",
                       "urn:ogc:def:crs:EPSG::31467", "urn:ogc:def:crs,crs:EPSG::31467",
                       "urn:ogc:def:crs,crs:EPSG:6.12:31467,crs:EPSG:6.12:5783", "EPSG:31467*EPSG:5783;NE;1"},
                      {"31467", "EPSG:31467*EPSG:5783"}}));

TEST(UrnObjectsTest, CarryTheVersionOfTheirUrn) {
    TestConfig server;
    server.givenInitialised({"<CRS>4326</CRS>", "<CRS>EPSG:31467*EPSG:5783</CRS>"});
    EXPECT_EQ(server.named("EPSG:4326")->getEpsgVersion(), "");
    EXPECT_EQ(server.named("urn:x-ogc:def:crs:EPSG:6.12:4326")->getEpsgVersion(), "6.12");
    EXPECT_EQ(server.named("urn:ogc:def:crs,crs:EPSG::4326")->getEpsgVersion(), "");
    EXPECT_EQ(server.named("urn:ogc:def:crs:EPSG:6.12:31467,crs:EPSG:6.12:5783")->getEpsgVersion(), "6.126.12");
}

// Makes a CRS with code 7 of every URN.
class SevenOfUrns : public JournalCreator {
public:
    using JournalCreator::JournalCreator;
    AbstractCrs* createFromURN(const std::string& name) const override {
        AbstractCrs* const crs = JournalCreator::createFromURN(name);
        if (crs != nullptr) crs->setCode(7, crs->getSecCompoundCode(), false);
        return crs;
    }
};

TEST(UrnObjectsTest, AreWhatTheCreatorMakesOfTheUrn) {
    ConfigWith<SevenOfUrns> server;
    server.givenInitialised({"<CRS>EPSG:31467*EPSG:5783</CRS>"});
    const AbstractCrs* const crs = server.named("urn:ogc:def:crs:EPSG:6.12:7,crs:EPSG:6.12:5783");
    ASSERT_NE(crs, nullptr);
    EXPECT_EQ(crs->getPrimaryCode(), 7U);
    EXPECT_EQ(server.named("urn:x-ogc:def:crs:EPSG:6.12:7,crs:EPSG:6.12:5783"), crs);
    EXPECT_TRUE(server.config.isCrsConfigured("urn:ogc:def:crs:EPSG::7,crs:EPSG::5783"));
    EXPECT_TRUE(server.config.isCrsConfigured("urn:ogc:def:crs,crs:EPSG::7,crs:EPSG::5783"));
    EXPECT_FALSE(server.config.isCrsConfigured("urn:ogc:def:crs:EPSG:6.12:31467,crs:EPSG:6.12:5783"));
    EXPECT_FALSE(server.config.isCrsConfigured(7U));
}

// Records the URNs that it receives and reads none of them; every name is tried as a URN.
class CreatorWithoutUrns : public JournalCreator {
public:
    using JournalCreator::JournalCreator;
    AbstractCrs* createFromURN(const std::string& name) const override {
        given.push_back(name);
        return nullptr;
    }
    mutable Names given;
};

TEST(UrnObjectsTest, AreMadeOfTwoUrnsAndLeftOutByACreatorThatReadsNone) {
    ConfigWith<CreatorWithoutUrns> server;
    server.givenInitialised({"<CRS>4326</CRS>", "<CRS>EPSG:31467*EPSG:5783</CRS>"});
    EXPECT_THAT(server.creator->given,
                ElementsAre("EPSG:4326", "urn:ogc:def:crs:EPSG:6.12:4326", "urn:ogc:def:crs:EPSG::4326",
                            "EPSG:31467*EPSG:5783", "urn:ogc:def:crs:EPSG:6.12:31467,crs:EPSG:6.12:5783",
                            "urn:ogc:def:crs:EPSG::31467,crs:EPSG::5783"));
    EXPECT_TRUE(server.config.isCrsConfigured("urn:ogc:def:crs:EPSG::4326"));
    EXPECT_FALSE(server.config.isCrsConfigured("urn:ogc:def:crs:EPSG:6.12:4326"));
    EXPECT_FALSE(server.config.isCrsConfigured("urn:ogc:def:crs,crs:EPSG::4326"));
}

struct MappedEntry {
    const char* element;
    const char* alias;
    bool eastNorth;
    const char* identifier;
    bool ownEastNorth;
};

void PrintTo(const MappedEntry& mapped, std::ostream* stream) { *stream << mapped.element; }

class MappedEntryTest : public testing::TestWithParam<MappedEntry> {
protected:
    MappedEntryTest() { server.givenInitialised({GetParam().element}); }

    TestConfig server;
};

TEST_P(MappedEntryTest, GivesAliasAndAxisOrderToTheObjectUnderTheAlias) {
    const AbstractCrs* const mapped = server.config.getFromNameCache(GetParam().alias, true);
    EXPECT_EQ(mapped->getAlias(), GetParam().alias);
    EXPECT_EQ(mapped->isAxisOrderEastNorthOrLonLat(), GetParam().eastNorth);
    EXPECT_EQ(mapped->getAliasOrIdentifier(false), GetParam().identifier);
}

TEST_P(MappedEntryTest, LeavesTheOtherNamesTheirOwnAxisOrder) {
    const std::string code = std::string(GetParam().identifier).substr(5);
    for (const std::string& name :
         {"EPSG:" + code, code, "urn:ogc:def:crs:EPSG::" + code, "urn:ogc:def:crs:EPSG:6.12:" + code,
          "urn:ogc:def:crs,crs:EPSG::" + code, "urn:EPSG:geographicCRS:" + code}) {
        EXPECT_EQ(server.config.getFromNameCache(name, true)->getAlias(), "");
        EXPECT_EQ(server.named(name)->isAxisOrderEastNorthOrLonLat(), GetParam().ownEastNorth) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Entries, MappedEntryTest,
    testing::Values(MappedEntry{"<CRS>CRS:84</CRS>", "CRS:84", true, "EPSG:4326", false},
                    MappedEntry{"<CRS mapToEpsgCode='4326' axisOrder='EN'>A</CRS>", "A", true, "EPSG:4326", false},
                    MappedEntry{"<CRS mapToEpsgCode='4326' axisOrder='NE'>A</CRS>", "A", false, "EPSG:4326", false},
                    MappedEntry{"<CRS mapToEpsgCode='4326'>A</CRS>", "A", false, "EPSG:4326", false},
                    MappedEntry{"<CRS mapToEpsgCode='31467' axisOrder='EN'>A</CRS>", "A", true, "EPSG:31467", false},
                    MappedEntry{"<CRS mapToEpsgCode='25832' axisOrder='NE'>A</CRS>", "A", false, "EPSG:25832", true},
                    MappedEntry{"<CRS mapToEpsgCode='25832' axisOrder='ne'>A</CRS>", "A", true, "EPSG:25832", true}));

TEST(AxisOrderOverrideTest, HasNoEffectWithoutAnAlias) {
    TestConfig server;
    server.givenInitialised({"<CRS axisOrder='EN'>4326</CRS>", "<CRS axisOrder='NE'>25832</CRS>"});
    for (const char* const name : {"EPSG:4326", "4326", "urn:ogc:def:crs:EPSG:6.12:4326"})
        EXPECT_FALSE(server.named(name)->isAxisOrderEastNorthOrLonLat()) << name;
    EXPECT_TRUE(server.named("EPSG:25832")->isAxisOrderEastNorthOrLonLat());
    EXPECT_EQ(server.named("EPSG:4326;EN;1"), nullptr);
}

class Crs84BesideEpsg4326Test : public testing::TestWithParam<Names> {};

TEST_P(Crs84BesideEpsg4326Test, RegistersBoth) {
    TestConfig server;
    server.givenInitialised(GetParam());
    const AbstractCrs* const latLon = server.config.getFromCodeCache("4326", true);
    EXPECT_EQ(server.named("EPSG:4326"), latLon);
    EXPECT_FALSE(latLon->isAxisOrderEastNorthOrLonLat());
    EXPECT_EQ(latLon->getAlias(), "");
    EXPECT_TRUE(server.named("CRS:84")->isAxisOrderEastNorthOrLonLat());
    EXPECT_EQ(server.named("CRS:84")->getAlias(), "CRS:84");
    EXPECT_EQ(server.config.getFromCodeCache("CRS:84", false), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Orders, Crs84BesideEpsg4326Test,
                         testing::Values(Names{"<CRS>EPSG:4326</CRS>", "<CRS>CRS:84</CRS>"},
                                         Names{"<CRS>CRS:84</CRS>", "<CRS>EPSG:4326</CRS>"}));

struct NameConflict {
    const char* name;
    Names elements;
    const char* disputed;
    unsigned int code;
};

void PrintTo(const NameConflict& conflict, std::ostream* stream) { *stream << conflict.name; }

class NameConflictTest : public testing::TestWithParam<NameConflict> {};

TEST_P(NameConflictTest, IsWonByTheFirstEntry) {
    TestConfig server;
    server.givenInitialised(GetParam().elements);
    EXPECT_EQ(server.named(GetParam().disputed)->getPrimaryCode(), GetParam().code);
}

INSTANTIATE_TEST_SUITE_P(Entries, NameConflictTest,
                         testing::Values(NameConflict{"two aliases",
                                                      {"<CRS mapToEpsgCode='31467'>A</CRS>",
                                                       "<CRS mapToEpsgCode='31468'>A</CRS>"},
                                                      "A",
                                                      31467},
                                         NameConflict{"identifier before alias",
                                                      {"<CRS>4326</CRS>", "<CRS mapToEpsgCode='31467'>EPSG:4326</CRS>"},
                                                      "EPSG:4326",
                                                      4326},
                                         NameConflict{"alias before identifier",
                                                      {"<CRS mapToEpsgCode='31467'>EPSG:4326</CRS>", "<CRS>4326</CRS>"},
                                                      "EPSG:4326",
                                                      31467}));

TEST(LookupTest, IsExact) {
    TestConfig server;
    server.givenInitialised({"<CRS>4326</CRS>"});
    EXPECT_NE(server.config.getFromNameCache("EPSG:4326", false), nullptr);
    for (const char* const key : {"epsg:4326", " EPSG:4326", "EPSG:4326 ", "EPSG:04326", ""}) {
        EXPECT_EQ(server.config.getFromNameCache(key, false), nullptr) << key;
        EXPECT_EQ(server.config.getFromCodeCache(key, false), nullptr) << key;
    }
    EXPECT_NE(server.config.getFromCodeCache("4326", false), nullptr);
    EXPECT_EQ(server.config.getFromCodeCache("EPSG:4326", false), nullptr);
}

TEST(LookupTest, GivesTheStoredObjectWhetherOrNotItMayThrow) {
    TestConfig server;
    server.givenInitialised({"<CRS>4326</CRS>"});
    EXPECT_EQ(server.config.getFromNameCache("4326", true), server.named("4326"));
    EXPECT_EQ(server.config.getFromCodeCache("4326", true), server.ofCode("4326"));
}

TEST(LookupTest, ReportsAMissWithTheKeyAsGiven) {
    TestConfig server;
    server.givenInitialised({"<CRS>4326</CRS>"});
    for (const char* const key : {"9999", "4326*5783", "epsg:4326", " 4326", ""}) {
        const std::string report =
            std::string("qvCrsUnavailable: The requested CRS ") + key + " is not set up in the configuration";
        EXPECT_EQ(reportOf<CrsNotConfigured>([&] { server.config.getFromCodeCache(key, true); }), report);
        EXPECT_EQ(reportOf<CrsNotConfigured>([&] { server.config.getFromNameCache(key, true); }), report);
    }
}

// One object for the short names, and one for each pair of URNs.
constexpr std::size_t HELD_PER_CRS = 3;

struct HeldObjects {
    const char* behaviour;
    Names elements;
    std::size_t held;
};

void PrintTo(const HeldObjects& objects, std::ostream* stream) { *stream << objects.behaviour; }

class OwnershipTest : public testing::TestWithParam<HeldObjects> {
protected:
    OwnershipTest() { server.givenInitialised(GetParam().elements); }

    TestConfig server;
};

TEST_P(OwnershipTest, IsOfWhatTheCachesReferTo) { EXPECT_EQ(server.journal.live.count(), GetParam().held); }

TEST_P(OwnershipTest, EndsWithTheDestructorBeforeTheCreatorIsDeleted) {
    server.destroy();
    EXPECT_EQ(server.journal.liveWhenDeleted, 0U);
}

TEST_P(OwnershipTest, EndsWhenTheCachesAreEmptied) {
    server.config.cleanCodeAndIdentifierCache();
    EXPECT_EQ(server.journal.live.count(), 0U);
    EXPECT_FALSE(server.journal.liveWhenDeleted.has_value());
}

TEST_P(OwnershipTest, IsOfAsMuchAfterAReinitialisation) {
    server.config.reinit();
    server.config.reinit();
    EXPECT_EQ(server.journal.live.count(), GetParam().held);
}

INSTANTIATE_TEST_SUITE_P(
    Entries, OwnershipTest,
    testing::Values(HeldObjects{"no entry", {}, 0}, HeldObjects{"one CRS", {"<CRS>4326</CRS>"}, HELD_PER_CRS},
                    HeldObjects{"compound CRS", {"<CRS>EPSG:31467*EPSG:5783</CRS>"}, HELD_PER_CRS},
                    HeldObjects{"CRS with an alias", {"<CRS mapToEpsgCode='31467'>A</CRS>"}, HELD_PER_CRS + 1},
                    HeldObjects{"second alias of a CRS",
                                {"<CRS mapToEpsgCode='31467'>A</CRS>", "<CRS mapToEpsgCode='31467'>B</CRS>"},
                                HELD_PER_CRS + 2},
                    HeldObjects{"alias that is taken",
                                {"<CRS mapToEpsgCode='31467'>A</CRS>", "<CRS mapToEpsgCode='31468'>A</CRS>"},
                                2 * HELD_PER_CRS + 1},
                    HeldObjects{"CRS with and without a vertical part",
                                {"<CRS>31467</CRS>", "<CRS>EPSG:31467*EPSG:5783</CRS>"},
                                2 * HELD_PER_CRS}));

class RegistrationTest : public testing::Test {
protected:
    const AbstractCrs* givenRegistered(unsigned int primary, unsigned int secondary, double scaleFactor) {
        AbstractCrs* const crs = server.creator->createFromCode(primary, secondary, true);
        crs->setPrimaryScaleFactor(scaleFactor);
        server.config.cacheLongNameAndCode(crs);
        return crs;
    }

    TestConfig server;
};

TEST_F(RegistrationTest, TakesTheCrsOver) {
    const AbstractCrs* const crs = givenRegistered(4326, 0, 1);
    EXPECT_EQ(server.config.getFromCodeCache("4326", false), crs);
    EXPECT_EQ(server.named("EPSG:4326"), crs);
    EXPECT_EQ(server.journal.live.count(), HELD_PER_CRS);
}

TEST_F(RegistrationTest, LeavesTheSetsAlone) {
    givenRegistered(4326, 0, 1);
    EXPECT_FALSE(server.config.isCrsConfigured(4326U));
    EXPECT_THAT(server.config.getConfiguredCrsIdentifiers(), IsEmpty());
}

TEST_F(RegistrationTest, ReleasesACrsThatNoCacheTook) {
    const AbstractCrs* const first = givenRegistered(4326, 0, 1);
    givenRegistered(4326, 0, 1);
    EXPECT_EQ(server.config.getFromCodeCache("4326", false), first);
    EXPECT_EQ(server.journal.live.count(), HELD_PER_CRS);
}

TEST_F(RegistrationTest, KeepsACrsThatOnlyANameTook) {
    const AbstractCrs* const first = givenRegistered(4326, 0, 1);
    const AbstractCrs* const scaled = givenRegistered(4326, 0, 10);
    EXPECT_EQ(server.config.getFromCodeCache("4326", false), first);
    EXPECT_EQ(server.named("EPSG:4326"), first);
    EXPECT_EQ(server.named("EPSG:4326;NE;10"), scaled);
    EXPECT_EQ(server.journal.live.count(), HELD_PER_CRS + 1);
    server.config.cleanCodeAndIdentifierCache();
    EXPECT_EQ(server.journal.live.count(), 0U);
}

TEST_F(RegistrationTest, OfACrsThatTheCodeCacheHoldsChangesNothing) {
    const AbstractCrs* const crs = givenRegistered(4326, 0, 1);
    const std::size_t held = server.journal.live.count();
    server.config.cacheLongNameAndCode(crs);
    EXPECT_EQ(server.config.getFromCodeCache("4326", false), crs);
    EXPECT_TRUE(server.journal.live.contains(crs));
    EXPECT_EQ(server.journal.live.count(), held);
}

// The second CRS of a code, with another scale factor, is kept only for its text form.
TEST_F(RegistrationTest, OfACrsThatTheNameCacheAloneHoldsChangesNothing) {
    givenRegistered(4326, 0, 1);
    const AbstractCrs* const crs = givenRegistered(4326, 0, 2);
    const std::size_t held = server.journal.live.count();
    server.config.cacheLongNameAndCode(crs);
    EXPECT_NE(server.config.getFromCodeCache("4326", false), crs);
    EXPECT_EQ(server.named("EPSG:4326;NE;2"), crs);
    EXPECT_EQ(server.journal.live.count(), held);
    server.destroy();
    EXPECT_EQ(server.journal.liveWhenDeleted, 0U);
}

TEST_F(RegistrationTest, OfTheCrsOfAnAliasOrAUrnChangesNothing) {
    server.givenInitialised({"<CRS mapToEpsgCode=\"31467\">GK3</CRS>"});
    const std::size_t held = server.journal.live.count();
    for (const char* const name : {"GK3", "urn:ogc:def:crs:EPSG:6.12:31467", "urn:ogc:def:crs,crs:EPSG::31467"}) {
        const AbstractCrs* const crs = server.named(name);
        server.config.cacheLongNameAndCode(crs);
        EXPECT_EQ(server.named(name), crs) << name;
        EXPECT_EQ(server.journal.live.count(), held) << name;
    }
}

TEST_F(RegistrationTest, ThatFailedBeforeAnyNameKeepsTheCrsUntilTheCachesAreEmptied) {
    AbstractCrs* const crs = server.creator->createUnknown();
    EXPECT_THROW(server.config.cacheLongNameAndCode(crs), QSHelpers::UnexpectedException);
    EXPECT_THROW(givenRegistered(0, 0, 2), QSHelpers::UnexpectedException);
    server.config.cacheLongNameAndCode(crs);
    EXPECT_EQ(server.journal.live.count(), 2U);
    server.config.cleanCodeAndIdentifierCache();
    EXPECT_EQ(server.journal.live.count(), 0U);
}

TEST_F(RegistrationTest, OfACrsReducedToItsHorizontalPartKeepsTheCompoundKey) {
    AbstractCrs* const crs = server.creator->createFromCode(31467, 5783, true);
    crs->forceDim2D();
    server.config.cacheLongNameAndCode(crs);
    EXPECT_EQ(server.config.getFromCodeCache("31467*5783", false), crs);
    EXPECT_EQ(server.named("urn:ogc:def:crs:EPSG::31467"), crs);
    EXPECT_EQ(server.named("EPSG:31467*EPSG:5783;NE;1;1"), crs);
}

TEST(CleaningTest, EmptiesTheCachesAndLeavesTheSets) {
    TestConfig server;
    server.givenInitialised({"<CRS>4326</CRS>", "<CRS>CRS:84</CRS>"});
    server.config.cleanCodeAndIdentifierCache();
    EXPECT_EQ(server.config.getFromCodeCache("4326", false), nullptr);
    for (const char* const name : {"4326", "EPSG:4326", "CRS:84", "urn:ogc:def:crs:EPSG:6.12:4326"})
        EXPECT_FALSE(server.config.isCrsConfigured(name)) << name;
    EXPECT_TRUE(server.config.isCrsConfigured(4326U));
    EXPECT_THAT(server.config.getConfiguredCrsIdentifiers(), ElementsAre("4326", "CRS:84", "EPSG:4326"));
}

TEST(ReinitialisationTest, StartsFromEmptyCachesAndSets) {
    TestConfig server;
    server.givenInitialised({"<CRS>4326</CRS>"});
    server.config.reinit();
    EXPECT_EQ(server.journal.initialisations(), 2);
    EXPECT_EQ(server.journal.liveAtInit, 0U);
    EXPECT_THAT(server.journal.identifiersAtInit, IsEmpty());
    EXPECT_TRUE(server.config.isCrsConfigured("4326"));
    EXPECT_TRUE(server.config.isCrsConfigured(4326U));
}

TEST(ReinitialisationTest, CallsTheInitialisationOfASubclass) {
    class OwnInitialisation : public ExposedConfig {
    public:
        void init() override { ++calls; }
        int calls = 0;
    };
    OwnInitialisation config;
    config.reinit();
    EXPECT_EQ(config.calls, 1);
}

TEST(LookupTest, MayRunOnManyThreads) {
    TestConfig server;
    server.givenInitialised({"<CRS>4326</CRS>", "<CRS>CRS:84</CRS>"});
    const AbstractCrs* const expected = server.named("CRS:84");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&server, expected] {
            for (int round = 0; round < 100; ++round) {
                EXPECT_EQ(server.config.getFromNameCache("CRS:84", true), expected);
                EXPECT_EQ(server.config.getFromCodeCache("9999", false), nullptr);
                EXPECT_TRUE(server.config.isCrsConfigured(4326U));
                EXPECT_EQ(server.config.getConfiguredCrsIdentifiers().size(), 3U);
                EXPECT_EQ(server.config.getConfigProperty("key"), "");
            }
        });
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace CoordinateTransformation
