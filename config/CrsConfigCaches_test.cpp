#include <cstddef>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "CoordinateTransformation/CrsConfig.h"
#include "CoordinateTransformation/CrsNotConfigured.h"
#include "QSHelpers/UnexpectedException.h"
#include "tests/support/JournaledConfig.h"

// What is registered under which names, which entry keeps a name, and who releases the objects.
namespace CoordinateTransformation {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Names = std::vector<std::string>;

// What a configured CRS is found under, in three groups: the CRS itself, and one object for each pair of URNs.
struct ConfiguredCrs {
    const char* element;
    const char* codeKey;
    Names ofTheCrs;
    Names ofVersion612;
    Names ofNoVersion;
    // Spellings that look like it and are not registered.
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

    JournaledConfig server;
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

// FakeCrs are made with the EPSG axis order here: 4326 north-east, the others east-north.
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
            {"EPSG:31467", "urn:ogc:def:crs:EPSG::31467", "EPSG:31467;EN;1", "31467", "urn:EPSG:geographicCRS:31467"},
            {"urn:ogc:def:crs:EPSG:6.12:31467", "urn:x-ogc:def:crs:EPSG:6.12:31467"},
            {"urn:ogc:def:crs,crs:EPSG::31467"},
            {"gk3", "GK3;EN;1", "urn:EPSG:geographicCRS:GK3", "urn:ogc:def:crs:EPSG::GK3"},
            {"31467", "EPSG:31467", "GK3"}},
        ConfiguredCrs{"<CRS>EPSG:31467*EPSG:5783</CRS>",
                      "31467*5783",
                      {"EPSG:31467*EPSG:5783", "urn:ogc:def:crs,crs:EPSG::31467,crs:EPSG::5783",
                       "EPSG:31467*EPSG:5783;EN;1;1", "31467*5783", "urn:EPSG:geographicCRS:31467*5783"},
                      {"urn:ogc:def:crs:EPSG:6.12:31467,crs:EPSG:6.12:5783",
                       "urn:x-ogc:def:crs:EPSG:6.12:31467,crs:EPSG:6.12:5783"},
                      {"urn:ogc:def:crs:EPSG::31467,crs:EPSG::5783"},
                      {"31467", "EPSG:31467", "5783", "EPSG:5783", "urn:EPSG:geographicCRS:31467",
                       "urn:ogc:def:crs:EPSG::31467", "urn:ogc:def:crs,crs:EPSG::31467",
                       "urn:ogc:def:crs,crs:EPSG:6.12:31467,crs:EPSG:6.12:5783", "EPSG:31467*EPSG:5783;EN;1"},
                      {"31467", "EPSG:31467*EPSG:5783"}}));

TEST(UrnObjectsTest, CarryTheVersionOfTheirUrn) {
    JournaledConfig server;
    server.givenInitialised({"<CRS>4326</CRS>", "<CRS>EPSG:31467*EPSG:5783</CRS>"});
    EXPECT_EQ(server.named("EPSG:4326")->getEpsgVersion(), "");
    EXPECT_EQ(server.named("urn:x-ogc:def:crs:EPSG:6.12:4326")->getEpsgVersion(), "6.12");
    EXPECT_EQ(server.named("urn:ogc:def:crs,crs:EPSG::4326")->getEpsgVersion(), "");
    EXPECT_EQ(server.named("urn:ogc:def:crs:EPSG:6.12:31467,crs:EPSG:6.12:5783")->getEpsgVersion(), "6.126.12");
}

TEST(UrnObjectsTest, AreWhatTheCreatorMakesOfTheUrn) {
    JournaledConfig server;
    server.creator->codeOfUrns = 7;
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

TEST(UrnObjectsTest, AreMadeOfTwoUrns) {
    Names urns;
    JournaledConfig server;
    server.creator->onUrn = [&](const std::string& urn) {
        if (urn.compare(0, 4, "urn:") == 0) urns.push_back(urn);
    };
    server.givenInitialised({"<CRS>4326</CRS>", "<CRS>EPSG:31467*EPSG:5783</CRS>"});
    EXPECT_THAT(urns, ElementsAre("urn:ogc:def:crs:EPSG:6.12:4326", "urn:ogc:def:crs:EPSG::4326",
                                  "urn:ogc:def:crs:EPSG:6.12:31467,crs:EPSG:6.12:5783",
                                  "urn:ogc:def:crs:EPSG::31467,crs:EPSG::5783"));
}

TEST(UrnObjectsTest, AreLeftOutByACreatorThatReadsNoUrns) {
    JournaledConfig server;
    server.creator->readsUrns = false;
    server.givenInitialised({"<CRS>4326</CRS>"});
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

    JournaledConfig server;
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
                    MappedEntry{"<CRS mapToEpsgCode='31467' axisOrder='NE'>A</CRS>", "A", false, "EPSG:31467", true},
                    MappedEntry{"<CRS mapToEpsgCode='31467' axisOrder='ne'>A</CRS>", "A", true, "EPSG:31467", true}));

TEST(AxisOrderOverrideTest, HasNoEffectWithoutAnAlias) {
    JournaledConfig server;
    server.givenInitialised({"<CRS axisOrder='EN'>4326</CRS>", "<CRS axisOrder='NE'>31467</CRS>"});
    for (const char* const name : {"EPSG:4326", "4326", "urn:ogc:def:crs:EPSG:6.12:4326"})
        EXPECT_FALSE(server.named(name)->isAxisOrderEastNorthOrLonLat()) << name;
    EXPECT_TRUE(server.named("EPSG:31467")->isAxisOrderEastNorthOrLonLat());
    EXPECT_EQ(server.named("EPSG:4326;EN;1"), nullptr);
}

class Crs84BesideEpsg4326Test : public testing::TestWithParam<Names> {};

TEST_P(Crs84BesideEpsg4326Test, RegistersBoth) {
    JournaledConfig server;
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

TEST(NameConflictTest, IsWonByTheFirstEntryWithAnAlias) {
    JournaledConfig server;
    server.givenInitialised({"<CRS mapToEpsgCode='31467'>A</CRS>", "<CRS mapToEpsgCode='31468'>A</CRS>"});
    EXPECT_EQ(server.named("A")->getPrimaryCode(), 31467U);
    EXPECT_EQ(server.named("EPSG:31468")->getPrimaryCode(), 31468U);
}

TEST(NameConflictTest, IsWonByAnIdentifierThatComesBeforeTheAlias) {
    JournaledConfig server;
    server.givenInitialised({"<CRS>4326</CRS>", "<CRS mapToEpsgCode='31467'>EPSG:4326</CRS>"});
    EXPECT_EQ(server.named("EPSG:4326")->getPrimaryCode(), 4326U);
    EXPECT_TRUE(server.config.isCrsConfigured(31467U));
}

TEST(NameConflictTest, IsWonByAnAliasThatComesBeforeTheIdentifier) {
    JournaledConfig server;
    server.givenInitialised({"<CRS mapToEpsgCode='31467'>EPSG:4326</CRS>", "<CRS>4326</CRS>"});
    EXPECT_EQ(server.named("EPSG:4326")->getPrimaryCode(), 31467U);
    EXPECT_FALSE(server.config.isCrsConfigured(4326U));
}

TEST(LookupTest, IsExact) {
    JournaledConfig server;
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
    JournaledConfig server;
    server.givenInitialised({"<CRS>4326</CRS>"});
    EXPECT_EQ(server.config.getFromNameCache("4326", true), server.config.getFromNameCache("4326", false));
    EXPECT_EQ(server.config.getFromCodeCache("4326", true), server.config.getFromCodeCache("4326", false));
}

class LookupMissTest : public testing::TestWithParam<const char*> {
protected:
    LookupMissTest() { server.givenInitialised({"<CRS>4326</CRS>"}); }

    JournaledConfig server;
    const std::string text = std::string("The requested CRS ") + GetParam() + " is not set up in the configuration";
};

TEST_P(LookupMissTest, IsReportedWithTheKeyAsGiven) {
    EXPECT_EQ(messageOf<CrsNotConfigured>([this] { server.config.getFromCodeCache(GetParam(), true); }), text);
    EXPECT_EQ(messageOf<CrsNotConfigured>([this] { server.config.getFromNameCache(GetParam(), true); }), text);
}

TEST_P(LookupMissTest, CarriesTheCodeOfAnUnavailableCrs) {
    try {
        server.config.getFromCodeCache(GetParam(), true);
        FAIL() << "found";
    } catch (const TransformationException& failure) {
        EXPECT_EQ(failure.getServiceExceptionCode(), "qvCrsUnavailable");
    }
}

INSTANTIATE_TEST_SUITE_P(Keys, LookupMissTest, testing::Values("9999", "4326*5783", "epsg:4326", " 4326", ""));

// One object for the short names, one for each pair of URNs.
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

    JournaledConfig server;
};

TEST_P(OwnershipTest, IsOfWhatTheCachesReferTo) { EXPECT_EQ(server.journal.held(), GetParam().held); }

TEST_P(OwnershipTest, EndsWithTheDestructor) {
    server.destroy();
    EXPECT_EQ(server.journal.held(), 0U);
    EXPECT_EQ(server.journal.live.count(), server.journal.leftBehind());
}

TEST_P(OwnershipTest, EndsBeforeTheCreatorIsDeleted) {
    server.destroy();
    EXPECT_TRUE(server.journal.destroyed);
    EXPECT_EQ(server.journal.heldAtDestruction, 0U);
}

TEST_P(OwnershipTest, EndsWhenTheCachesAreEmptied) {
    server.config.cleanCodeAndIdentifierCache();
    EXPECT_EQ(server.journal.held(), 0U);
    EXPECT_FALSE(server.journal.destroyed);
}

TEST_P(OwnershipTest, IsOfAsMuchAfterAReinitialisation) {
    server.config.reinit();
    server.config.reinit();
    EXPECT_EQ(server.journal.held(), GetParam().held);
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

class UrnOriginalsTest : public testing::Test {
protected:
    UrnOriginalsTest() { server.givenInitialised({"<CRS>4326</CRS>", "<CRS>CRS:84</CRS>"}); }

    static constexpr std::size_t entries = 2;
    static constexpr std::size_t urnsPerEntry = 2;

    JournaledConfig server;
};

TEST_F(UrnOriginalsTest, AreAllThatIsLeftBehind) {
    server.destroy();
#if defined(COORDTRANS_RELEASE_URN_ORIGINAL)
    EXPECT_EQ(server.journal.live.count(), 0U);
#else
    EXPECT_EQ(server.journal.live.count(), entries * urnsPerEntry);
    EXPECT_EQ(server.journal.leftBehind(), entries * urnsPerEntry);
#endif
}

class RegistrationTest : public testing::Test {
protected:
    const AbstractCrs* givenRegistered(unsigned int primary, unsigned int secondary, double scaleFactor) {
        AbstractCrs* const crs = server.creator->createFromCode(primary, secondary, true);
        crs->setPrimaryScaleFactor(scaleFactor);
        server.config.cacheLongNameAndCode(crs);
        return crs;
    }

    JournaledConfig server;
};

TEST_F(RegistrationTest, TakesTheCrsOver) {
    const AbstractCrs* const crs = givenRegistered(4326, 0, 1);
    EXPECT_EQ(server.config.getFromCodeCache("4326", false), crs);
    EXPECT_EQ(server.named("EPSG:4326"), crs);
    EXPECT_EQ(server.journal.held(), HELD_PER_CRS);
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
    EXPECT_EQ(server.journal.held(), HELD_PER_CRS);
}

TEST_F(RegistrationTest, KeepsACrsThatOnlyANameTook) {
    const AbstractCrs* const first = givenRegistered(4326, 0, 1);
    const AbstractCrs* const scaled = givenRegistered(4326, 0, 10);
    EXPECT_EQ(server.config.getFromCodeCache("4326", false), first);
    EXPECT_EQ(server.named("EPSG:4326"), first);
    EXPECT_EQ(server.named("EPSG:4326;NE;10"), scaled);
    EXPECT_EQ(server.journal.held(), HELD_PER_CRS + 1);
    server.config.cleanCodeAndIdentifierCache();
    EXPECT_EQ(server.journal.held(), 0U);
}

TEST_F(RegistrationTest, OfACrsThatTheCodeCacheHoldsChangesNothing) {
    const AbstractCrs* const crs = givenRegistered(4326, 0, 1);
    const std::size_t held = server.journal.held();
    server.config.cacheLongNameAndCode(crs);
    EXPECT_EQ(server.config.getFromCodeCache("4326", false), crs);
    EXPECT_TRUE(server.journal.live.contains(crs));
    EXPECT_EQ(server.journal.held(), held);
}

// The second CRS of a code with another scale factor is held for its text form alone.
TEST_F(RegistrationTest, OfACrsThatTheNameCacheAloneHoldsChangesNothing) {
    givenRegistered(4326, 0, 1);
    const AbstractCrs* const crs = givenRegistered(4326, 0, 2);
    const std::size_t held = server.journal.held();
    server.config.cacheLongNameAndCode(crs);
    EXPECT_NE(server.config.getFromCodeCache("4326", false), crs);
    EXPECT_EQ(server.named("EPSG:4326;NE;2"), crs);
    EXPECT_EQ(server.journal.held(), held);
    server.destroy();
    EXPECT_EQ(server.journal.heldAtDestruction, 0U);
}

TEST_F(RegistrationTest, OfTheCrsOfAnAliasOrAUrnChangesNothing) {
    server.givenInitialised({"<CRS mapToEpsgCode=\"31467\">GK3</CRS>"});
    const std::size_t held = server.journal.held();
    for (const char* const name : {"GK3", "urn:ogc:def:crs:EPSG:6.12:31467", "urn:ogc:def:crs,crs:EPSG::31467"}) {
        const AbstractCrs* const crs = server.named(name);
        server.config.cacheLongNameAndCode(crs);
        EXPECT_EQ(server.named(name), crs) << name;
        EXPECT_EQ(server.journal.held(), held) << name;
    }
}

TEST_F(RegistrationTest, ThatFailedBeforeAnyNameKeepsTheCrsUntilTheCachesAreEmptied) {
    AbstractCrs* const crs = server.creator->createUnknown();
    EXPECT_THROW(server.config.cacheLongNameAndCode(crs), QSHelpers::UnexpectedException);
    EXPECT_THROW(givenRegistered(0, 0, 2), QSHelpers::UnexpectedException);
    server.config.cacheLongNameAndCode(crs);
    EXPECT_EQ(server.journal.held(), 2U);
    server.config.cleanCodeAndIdentifierCache();
    EXPECT_EQ(server.journal.held(), 0U);
}

TEST_F(RegistrationTest, OfACrsReducedToItsHorizontalPartKeepsTheCompoundKey) {
    AbstractCrs* const crs = server.creator->createFromCode(31467, 5783, true);
    crs->forceDim2D();
    server.config.cacheLongNameAndCode(crs);
    EXPECT_EQ(server.config.getFromCodeCache("31467*5783", false), crs);
    EXPECT_EQ(server.named("urn:ogc:def:crs:EPSG::31467"), crs);
    EXPECT_EQ(server.named("EPSG:31467*EPSG:5783;EN;1;1"), crs);
}

TEST(CleaningTest, EmptiesTheCachesAndLeavesTheSets) {
    JournaledConfig server;
    server.givenInitialised({"<CRS>4326</CRS>", "<CRS>CRS:84</CRS>"});
    server.config.cleanCodeAndIdentifierCache();
    EXPECT_EQ(server.config.getFromCodeCache("4326", false), nullptr);
    for (const char* const name : {"4326", "EPSG:4326", "CRS:84", "urn:ogc:def:crs:EPSG:6.12:4326"})
        EXPECT_FALSE(server.config.isCrsConfigured(name)) << name;
    EXPECT_TRUE(server.config.isCrsConfigured(4326U));
    EXPECT_THAT(server.config.getConfiguredCrsIdentifiers(), ElementsAre("4326", "CRS:84", "EPSG:4326"));
}

TEST(ReinitialisationTest, StartsFromEmptyCachesAndSets) {
    JournaledConfig server;
    server.givenInitialised({"<CRS>4326</CRS>"});
    server.creator->onInit = [&] {
        EXPECT_EQ(server.journal.held(), 0U);
        EXPECT_FALSE(server.config.isCrsConfigured(4326U));
        EXPECT_FALSE(server.config.isCrsConfigured("4326"));
        EXPECT_THAT(server.config.getConfiguredCrsIdentifiers(), IsEmpty());
    };
    server.config.reinit();
    EXPECT_EQ(server.journal.initialisations, 2);
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
    JournaledConfig server;
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
