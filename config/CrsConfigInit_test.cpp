// How a configuration gets its creator, and how it is initialised.

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CoordinateTransformation/CrsConfig.h"
#include "CoordinateTransformation/Misconfigured.h"
#include "CoordinateTransformation/Proj4CrsCreator.h"
#include "QSHelpers/UnexpectedException.h"
#include "tests/support/Failures.h"
#include "tests/support/TestConfig.h"

namespace CoordinateTransformation {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::messageOf;
using TestSupport::reportOf;

// Sets or unsets the variable, and restores it on destruction.
class SubsystemVariable {
public:
    explicit SubsystemVariable(const char* value) {
        if (const char* const present = std::getenv(NAME)) previous = present;
        set(value);
    }
    ~SubsystemVariable() { set(previous ? previous->c_str() : nullptr); }
    SubsystemVariable(const SubsystemVariable&) = delete;
    SubsystemVariable& operator=(const SubsystemVariable&) = delete;

private:
    static constexpr char NAME[] = "USE_COORD_TRANSFORMATION_SUBSYSTEM";

    static void set(const char* value) { value == nullptr ? unsetenv(NAME) : setenv(NAME, value, 1); }

    std::optional<std::string> previous;
};

using ConfigPtr = std::unique_ptr<CrsConfig>;

ConfigPtr fromId(const char* id) { return ConfigPtr(CrsConfig::createConfigFromId(id)); }

// Null for a variable that is not set.
ConfigPtr fromEnvironment(const char* value) {
    const SubsystemVariable variable(value);
    return ConfigPtr(CrsConfig::createDefaultConfigOrFromEnvVar());
}

TEST(FactoryTest, MakesAProj4Configuration) {
    const SubsystemVariable other("other");
    for (const ConfigPtr& config : {fromId("proj4"), fromEnvironment("proj4"), fromEnvironment(nullptr)}) {
        EXPECT_NE(dynamic_cast<const Proj4CrsCreator*>(&config->getCreator()), nullptr);
        EXPECT_THAT(*config->getConfiguredCrs(), IsEmpty());
    }
}

// If it were initialised already, the creator would not read the directory again.
TEST(FactoryTest, LeavesInitialisationToTheCaller) {
    const ConfigPtr config = fromId("proj4");
    config->setConfigProperty("Proj4ConfigDir", "/no/such/directory");
    EXPECT_EQ(messageOf<Misconfigured>([&] { config->init(); }),
              "Configured Proj4 directory \"/no/such/directory\" not found!");
}

TEST(FactoryTest, RefusesEveryOtherSubsystem) {
    for (const char* const id : {"", "PROJ4", "Proj4", "proj", "proj4 ", " proj4", "proj44", "geos"}) {
        const std::string report = std::string("qvConfigurationError: The coordinate transformation subsystem ") + id +
                                   " is unknown and not available!";
        EXPECT_EQ(reportOf<Misconfigured>([id] { fromId(id); }), report);
        EXPECT_EQ(reportOf<Misconfigured>([id] { fromEnvironment(id); }), report);
    }
}

TEST(InjectionTest, KeepsTheFirstCreatorAndLeavesTheSecondToTheCaller) {
    CreatorJournal secondJournal;
    TestConfig server;
    JournalCreator second(secondJournal, server.config);
    server.config.injectCreator(&second);
    EXPECT_EQ(&server.config.getCreator(), server.creator);
    server.givenInitialised({"<CRS>4326</CRS>"});
    EXPECT_EQ(server.journal.initialisations(), 1);
    EXPECT_EQ(secondJournal.initialisations(), 0);
    server.destroy();
    EXPECT_TRUE(server.journal.liveWhenDeleted.has_value());
    EXPECT_FALSE(secondJournal.liveWhenDeleted.has_value());
}

TEST(InitTest, NeedsACreator) {
    CrsConfig config;
    config.addCrsConfigData(CrsConfigData("EPSG:4326"));
    EXPECT_EQ(messageOf<Misconfigured>([&] { config.init(); }), "No CrsCreator injected");
    EXPECT_FALSE(config.isCrsConfigured("EPSG:4326"));
}

TEST(InitTest, InitialisesTheCreatorAndThenAsksForTheIdentifiersInOrder) {
    TestConfig server;
    server.config.init();
    EXPECT_THAT(server.journal.calls, ElementsAre("init"));
    EXPECT_THAT(server.config.getConfiguredCrsIdentifiers(), IsEmpty());
    server.journal.calls.clear();
    server.givenInitialised({"<CRS>4258</CRS>", "<CRS mapToEpsgCode='31467'>GK3</CRS>", "<CRS>CRS:84</CRS>"});
    EXPECT_THAT(server.journal.calls, ElementsAre("init", "EPSG:4258", "EPSG:31467", "EPSG:4326"));
}

TEST(InitTest, MayBeRepeated) {
    TestConfig server;
    server.givenInitialised({"<CRS>4326</CRS>", "<CRS>CRS:84</CRS>"});
    const AbstractCrs* const crs = server.named("EPSG:4326");
    const std::size_t held = server.journal.live.count();
    server.config.init();
    EXPECT_EQ(server.named("EPSG:4326"), crs);
    EXPECT_EQ(server.journal.live.count(), held);
}

TEST(InitTest, UnderstandsABlankBeforeACode) {
    TestConfig server;
    server.givenInitialised({"<CRS> 4326</CRS>"});
    EXPECT_TRUE(server.config.isCrsConfigured("EPSG:4326"));
    EXPECT_FALSE(server.config.isCrsConfigured(" 4326"));
}

struct UnknownEntry {
    const char* element;
    const char* identifier;
};

void PrintTo(const UnknownEntry& unknown, std::ostream* stream) { *stream << unknown.element; }

class UnknownEntryTest : public testing::TestWithParam<UnknownEntry> {};

TEST_P(UnknownEntryTest, StopsTheInitialisation) {
    TestConfig server;
    server.givenConfigured({"<CRS>4326</CRS>", GetParam().element, "<CRS>31467</CRS>"});
    EXPECT_EQ(messageOf<Misconfigured>([&] { server.config.init(); }),
              std::string("The EPSG code \"") + GetParam().identifier + "\" is unknown");
    EXPECT_TRUE(server.config.isCrsConfigured("urn:ogc:def:crs,crs:EPSG::4326"));
    EXPECT_THAT(server.config.getConfiguredCrsIdentifiers(), ElementsAre("4326", "EPSG:4326"));
    EXPECT_FALSE(server.config.isCrsConfigured(31467U));
}

INSTANTIATE_TEST_SUITE_P(
    Entries, UnknownEntryTest,
    testing::Values(UnknownEntry{"<CRS>foo</CRS>", "FOO"}, UnknownEntry{"<CRS/>", ""},
                    UnknownEntry{"<CRS mapToEpsgCode=''>A</CRS>", ""},
                    UnknownEntry{"<CRS mapToEpsgCode='bar'>A</CRS>", "BAR"},
                    UnknownEntry{"<CRS>\n4326\n</CRS>", "\n4326\n"}, UnknownEntry{"<CRS>4326\n</CRS>", "EPSG:4326\n"},
                    UnknownEntry{"<CRS>crs:84</CRS>", "CRS:84"},
                    UnknownEntry{"<CRS>urn:ogc:def:crs:EPSG::4258</CRS>", "URN:OGC:DEF:CRS:EPSG::4258"},
                    UnknownEntry{"<CRS mapToEpsgCode='urn:ogc:def:crs:EPSG::4258'>A</CRS>",
                                 "URN:OGC:DEF:CRS:EPSG::4258"},
                    UnknownEntry{"<CRS>4294967296</CRS>", "EPSG:4294967296"}));

TEST(BareCompoundKeyTest, IsPrefixedOnceAndThenTooShort) {
    TestConfig server;
    server.givenConfigured({"<CRS>27700*5701</CRS>"});
    EXPECT_EQ(messageOf<std::out_of_range>([&] { server.config.init(); }), "invalid string position");
}

template <typename Creator>
class ConfigThatFails : public testing::Test {
protected:
    ConfigThatFails() { server.givenConfigured({"<CRS>1</CRS>", "<CRS mapToEpsgCode='2'>A</CRS>", "<CRS>3</CRS>"}); }

    std::string messageOfInit() {
        return messageOf<std::runtime_error>([this] { server.config.init(); });
    }
    // Merging initialises only a configuration that was initialised before.
    bool isInitialised() {
        const long before = server.journal.initialisations();
        CrsConfig other;
        other.merge(server.config);
        return server.journal.initialisations() != before;
    }

    ConfigWith<Creator> server;
};

using InitFailureTest = ConfigThatFails<FailingCreator>;

TEST_F(InitFailureTest, OfTheCreatorItselfPassesThrough) {
    server.creator->failsToInitialise = true;
    EXPECT_EQ(messageOfInit(), "no directory");
    EXPECT_THAT(server.journal.calls, ElementsAre("init"));
    server.creator->failsToInitialise = false;
    EXPECT_FALSE(isInitialised());
}

TEST_F(InitFailureTest, AtACodeLeavesTheEntriesBeforeItRegisteredAndCanBeMadeGood) {
    server.creator->failingCode = 2;
    EXPECT_EQ(messageOfInit(), "no such code");
    EXPECT_TRUE(server.config.isCrsConfigured("urn:ogc:def:crs,crs:EPSG::1"));
    EXPECT_THAT(server.config.getConfiguredCrsIdentifiers(), ElementsAre("1", "EPSG:1"));
    EXPECT_THAT(server.journal.calls, ElementsAre("init", "EPSG:1", "EPSG:2"));
    EXPECT_FALSE(isInitialised());
    server.creator->failingCode.reset();
    server.config.init();
    EXPECT_TRUE(server.config.isCrsConfigured("EPSG:3"));
    EXPECT_TRUE(isInitialised());
}

TEST_F(InitFailureTest, OfAReinitialisationLeavesTheConfigurationMarkedInitialised) {
    server.config.init();
    server.creator->failsToInitialise = true;
    EXPECT_EQ(messageOf<std::runtime_error>([this] { server.config.reinit(); }), "no directory");
    EXPECT_THAT(server.config.getConfiguredCrsIdentifiers(), IsEmpty());
    EXPECT_FALSE(server.config.isCrsConfigured("EPSG:1"));
    EXPECT_FALSE(server.config.isCrsConfigured(1U));
    server.creator->failsToInitialise = false;
    EXPECT_TRUE(isInitialised());
}

// Fails for the URN of code 2 without a version.
class UrnRefusingCreator : public JournalCreator {
public:
    using JournalCreator::JournalCreator;
    AbstractCrs* createFromURN(const std::string& name) const override {
        if (name == "urn:ogc:def:crs:EPSG::2") throw std::runtime_error("no such URN");
        return JournalCreator::createFromURN(name);
    }
};

using InitFailureAtAUrnTest = ConfigThatFails<UrnRefusingCreator>;

TEST_F(InitFailureAtAUrnTest, LeavesTheNamesBeforeItRegisteredAndLosesNoCrs) {
    EXPECT_EQ(messageOfInit(), "no such URN");
    for (const char* const name : {"A", "EPSG:2", "urn:EPSG:geographicCRS:2", "urn:x-ogc:def:crs:EPSG:6.12:2"})
        EXPECT_TRUE(server.config.isCrsConfigured(name)) << name;
    EXPECT_FALSE(server.config.isCrsConfigured("urn:ogc:def:crs,crs:EPSG::2"));
    EXPECT_NE(server.ofCode("2"), nullptr);
    EXPECT_FALSE(server.config.isCrsConfigured(3U));
    server.destroy();
    EXPECT_EQ(server.journal.live.count(), 0U);
}

// A CRS without a code can be made and has an identifier, but it has no text form.
TEST(EntryWithoutACodeTest, FailsWithWhatCameBeforeItsTextFormRegistered) {
    TestConfig server;
    server.givenConfigured({"<CRS mapToEpsgCode='0'>unknown</CRS>"});
    EXPECT_EQ(messageOf<QSHelpers::UnexpectedException>([&] { server.config.init(); }),
              "Text representation of an unknown or the default SRS requested.");
    EXPECT_TRUE(server.config.isCrsConfigured(0U));
    EXPECT_TRUE(server.config.isCrsConfigured("unknown"));
    EXPECT_EQ(server.config.getFromCodeCache("0", true), server.config.getFromNameCache("", true));
    EXPECT_FALSE(server.config.isCrsConfigured("0"));
    server.destroy();
    EXPECT_EQ(server.journal.live.count(), 0U);
}

TEST(ReportingInitTest, LeavesOutAnEntryThatFailsAndReportsEach) {
    TestConfig server;
    server.givenConfigured({"<CRS>1</CRS>", "<CRS>nonsense</CRS>", "<CRS mapToEpsgCode='2'>B</CRS>"});
    std::vector<std::string> reports;
    server.config.initReporting(
        [&reports](const CrsConfigData& entry, const AbstractCrs* crs, const std::exception* failure) {
            reports.push_back(entry.getAliasOrIdentifier() + ": " +
                              (crs == nullptr ? failure->what() : std::to_string(crs->getPrimaryCode())));
        });
    EXPECT_THAT(reports, ElementsAre("EPSG:1: 1", "NONSENSE: The EPSG code \"NONSENSE\" is unknown", "B: 2"));
    EXPECT_TRUE(server.config.isCrsConfigured("B"));
    EXPECT_TRUE(server.config.isCrsConfigured(1U));
}

TEST(RegisteredNamesTest, AreThoseOfTheNameCacheInTheOrderOfRegistration) {
    TestConfig server;
    EXPECT_THAT(server.config.getRegisteredNames(), IsEmpty());
    server.givenConfigured({"<CRS mapToEpsgCode='2'>B</CRS>"});
    server.config.init();
    const std::vector<std::string> names = server.config.getRegisteredNames();
    ASSERT_FALSE(names.empty());
    EXPECT_EQ(names.front(), "B");
    EXPECT_EQ(std::count(names.begin(), names.end(), "EPSG:2"), 1);
    for (const std::string& name : names) EXPECT_TRUE(server.config.isCrsConfigured(name)) << name;
}

}  // namespace
}  // namespace CoordinateTransformation
