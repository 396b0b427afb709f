#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "CoordinateTransformation/CrsConfig.h"
#include "CoordinateTransformation/Misconfigured.h"
#include "CoordinateTransformation/Proj4CrsCreator.h"
#include "QSHelpers/UnexpectedException.h"
#include "tests/support/JournaledConfig.h"

namespace CoordinateTransformation {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Names = std::vector<std::string>;

constexpr char SUBSYSTEM_VARIABLE[] = "USE_COORD_TRANSFORMATION_SUBSYSTEM";

// Sets the variable, or removes it, and puts back what was there.
class SubsystemVariable {
public:
    explicit SubsystemVariable(const char* value) {
        if (const char* const present = std::getenv(SUBSYSTEM_VARIABLE)) previous = present;
        set(value);
    }
    ~SubsystemVariable() { set(previous ? previous->c_str() : nullptr); }
    SubsystemVariable(const SubsystemVariable&) = delete;
    SubsystemVariable& operator=(const SubsystemVariable&) = delete;

private:
    static void set(const char* value) {
        if (value == nullptr)
            unsetenv(SUBSYSTEM_VARIABLE);
        else
            setenv(SUBSYSTEM_VARIABLE, value, 1);
    }

    std::optional<std::string> previous;
};

void expectProj4(const CrsConfig& config) {
    EXPECT_NE(dynamic_cast<const Proj4CrsCreator*>(&config.getCreator()), nullptr);
    EXPECT_THAT(*config.getConfiguredCrs(), IsEmpty());
}

TEST(FactoryTest, MakesAProj4ConfigurationWithoutTheVariable) {
    const SubsystemVariable variable(nullptr);
    const std::unique_ptr<CrsConfig> config(CrsConfig::createDefaultConfigOrFromEnvVar());
    expectProj4(*config);
}

TEST(FactoryTest, MakesAProj4ConfigurationForItsName) {
    const SubsystemVariable variable("proj4");
    expectProj4(*std::unique_ptr<CrsConfig>(CrsConfig::createDefaultConfigOrFromEnvVar()));
    expectProj4(*std::unique_ptr<CrsConfig>(CrsConfig::createConfigFromId("proj4")));
}

TEST(FactoryTest, LooksAtTheVariableOnlyWhereItIsAskedTo) {
    const SubsystemVariable variable("other");
    expectProj4(*std::unique_ptr<CrsConfig>(CrsConfig::createConfigFromId("proj4")));
}

// Were it initialised already, the creator would not ask for the directory any more.
TEST(FactoryTest, LeavesInitialisationToTheCaller) {
    const std::unique_ptr<CrsConfig> config(CrsConfig::createConfigFromId("proj4"));
    config->setConfigProperty("Proj4ConfigDir", "/no/such/directory");
    EXPECT_EQ(messageOf<Misconfigured>([&] { config->init(); }),
              "Configured Proj4 directory \"/no/such/directory\" not found!");
}

class UnknownSubsystemTest : public testing::TestWithParam<const char*> {
protected:
    const std::string text =
        std::string("The coordinate transformation subsystem ") + GetParam() + " is unknown and not available!";
};

TEST_P(UnknownSubsystemTest, IsRefusedAsId) {
    EXPECT_EQ(messageOf<Misconfigured>([] { CrsConfig::createConfigFromId(GetParam()); }), text);
}

TEST_P(UnknownSubsystemTest, IsRefusedFromTheEnvironment) {
    const SubsystemVariable variable(GetParam());
    EXPECT_EQ(messageOf<Misconfigured>([] { CrsConfig::createDefaultConfigOrFromEnvVar(); }), text);
}

INSTANTIATE_TEST_SUITE_P(Names, UnknownSubsystemTest,
                         testing::Values("", "PROJ4", "Proj4", "proj", "proj4 ", " proj4", "proj44", "geos"));

TEST(UnknownSubsystemTextTest, HasTwoBlanksForAnEmptyName) {
    const SubsystemVariable variable("");
    EXPECT_EQ(messageOf<Misconfigured>([] { CrsConfig::createDefaultConfigOrFromEnvVar(); }),
              "The coordinate transformation subsystem  is unknown and not available!");
}

TEST(UnknownSubsystemTextTest, GoesWithTheCodeOfAConfigurationError) {
    try {
        CrsConfig::createConfigFromId("");
        FAIL() << "accepted";
    } catch (const TransformationException& failure) {
        EXPECT_EQ(failure.getServiceExceptionCode(), "qvConfigurationError");
    }
}

TEST(InjectionTest, KeepsTheFirstCreatorAndLeavesTheSecondToTheCaller) {
    CreatorJournal secondJournal;
    {
        JournaledConfig server;
        JournalCreator second(secondJournal, server.config);
        server.config.injectCreator(&second);
        EXPECT_EQ(&server.config.getCreator(), server.creator);
        server.givenInitialised({"<CRS>4326</CRS>"});
        EXPECT_EQ(server.journal.initialisations, 1);
        server.destroy();
        EXPECT_TRUE(server.journal.destroyed);
        EXPECT_FALSE(secondJournal.destroyed);
    }
    EXPECT_EQ(secondJournal.initialisations, 0);
}

TEST(InitTest, NeedsACreator) {
    CrsConfig config;
    config.addCrsConfigData(CrsConfigData("EPSG:4326"));
    EXPECT_EQ(messageOf<Misconfigured>([&] { config.init(); }), "No CrsCreator injected");
    EXPECT_FALSE(config.isCrsConfigured("EPSG:4326"));
}

TEST(InitTest, InitialisesTheCreatorOfAnEmptyConfiguration) {
    JournaledConfig server;
    server.config.init();
    EXPECT_EQ(server.journal.initialisations, 1);
    EXPECT_THAT(server.config.getConfiguredCrsIdentifiers(), IsEmpty());
}

TEST(InitTest, InitialisesTheCreatorBeforeItAsksForACrs) {
    JournaledConfig server;
    server.creator->onCode = [&](unsigned int) { EXPECT_EQ(server.journal.initialisations, 1); };
    server.givenInitialised({"<CRS>4326</CRS>"});
    EXPECT_EQ(server.journal.initialisations, 1);
}

TEST(InitTest, AsksForTheIdentifiersInOrder) {
    JournaledConfig server;
    server.givenInitialised({"<CRS>4258</CRS>", "<CRS mapToEpsgCode='31467'>GK3</CRS>", "<CRS>CRS:84</CRS>"});
    EXPECT_THAT(server.journal.names, ElementsAre("EPSG:4258", "EPSG:31467", "EPSG:4326"));
}

TEST(InitTest, MayBeRepeated) {
    JournaledConfig server;
    server.givenInitialised({"<CRS>4326</CRS>", "<CRS>CRS:84</CRS>"});
    const AbstractCrs* const crs = server.named("EPSG:4326");
    const std::size_t held = server.journal.held();
    server.config.init();
    EXPECT_EQ(server.named("EPSG:4326"), crs);
    EXPECT_EQ(server.journal.held(), held);
}

struct UnknownEntry {
    const char* element;
    const char* text;
};

void PrintTo(const UnknownEntry& unknown, std::ostream* stream) { *stream << unknown.element; }

class UnknownEntryTest : public testing::TestWithParam<UnknownEntry> {};

TEST_P(UnknownEntryTest, StopsTheInitialisation) {
    JournaledConfig server;
    server.givenConfigured({"<CRS>4326</CRS>", GetParam().element, "<CRS>31467</CRS>"});
    EXPECT_EQ(messageOf<Misconfigured>([&] { server.config.init(); }), GetParam().text);
    EXPECT_TRUE(server.config.isCrsConfigured("urn:ogc:def:crs,crs:EPSG::4326"));
    EXPECT_THAT(server.config.getConfiguredCrsIdentifiers(), ElementsAre("4326", "EPSG:4326"));
    EXPECT_FALSE(server.config.isCrsConfigured(31467U));
}

INSTANTIATE_TEST_SUITE_P(
    Entries, UnknownEntryTest,
    testing::Values(UnknownEntry{"<CRS>foo</CRS>", "The EPSG code \"FOO\" is unknown"},
                    UnknownEntry{"<CRS/>", "The EPSG code \"\" is unknown"},
                    UnknownEntry{"<CRS mapToEpsgCode=''>A</CRS>", "The EPSG code \"\" is unknown"},
                    UnknownEntry{"<CRS mapToEpsgCode='bar'>A</CRS>", "The EPSG code \"BAR\" is unknown"},
                    UnknownEntry{"<CRS>\n4326\n</CRS>", "The EPSG code \"\n4326\n\" is unknown"},
                    UnknownEntry{"<CRS>4326\n</CRS>", "The EPSG code \"EPSG:4326\n\" is unknown"},
                    UnknownEntry{"<CRS>crs:84</CRS>", "The EPSG code \"CRS:84\" is unknown"},
                    UnknownEntry{"<CRS>urn:ogc:def:crs:EPSG::4258</CRS>",
                                 "The EPSG code \"URN:OGC:DEF:CRS:EPSG::4258\" is unknown"},
                    UnknownEntry{"<CRS mapToEpsgCode='urn:ogc:def:crs:EPSG::4258'>A</CRS>",
                                 "The EPSG code \"URN:OGC:DEF:CRS:EPSG::4258\" is unknown"},
                    UnknownEntry{"<CRS>4294967296</CRS>", "The EPSG code \"EPSG:4294967296\" is unknown"}));

TEST(BlankBeforeACodeTest, IsUnderstoodByTheCreator) {
    JournaledConfig server;
    server.givenInitialised({"<CRS> 4326</CRS>"});
    EXPECT_TRUE(server.config.isCrsConfigured("EPSG:4326"));
    EXPECT_FALSE(server.config.isCrsConfigured(" 4326"));
}

TEST(BareCompoundKeyTest, IsPrefixedOnceAndThenTooShort) {
    JournaledConfig server;
    server.givenConfigured({"<CRS>27700*5701</CRS>"});
    EXPECT_EQ(messageOf<std::out_of_range>([&] { server.config.init(); }), "invalid string position");
}

class InitFailureTest : public testing::Test {
protected:
    InitFailureTest() { server.givenConfigured({"<CRS>1</CRS>", "<CRS mapToEpsgCode='2'>A</CRS>", "<CRS>3</CRS>"}); }

    std::string messageOfInit() {
        return messageOf<std::runtime_error>([this] { server.config.init(); });
    }
    // Only an initialised configuration is initialised anew when it is merged.
    bool isInitialised() {
        const int before = server.journal.initialisations;
        CrsConfig other;
        other.merge(server.config);
        return server.journal.initialisations != before;
    }

    JournaledConfig server;
};

TEST_F(InitFailureTest, OfTheCreatorItselfPassesThrough) {
    server.creator->onInit = [] { throw std::runtime_error("no directory"); };
    EXPECT_EQ(messageOfInit(), "no directory");
    EXPECT_THAT(server.journal.names, IsEmpty());
    EXPECT_FALSE(isInitialised());
}

TEST_F(InitFailureTest, AtACodeLeavesTheEntriesBeforeItRegistered) {
    server.creator->onCode = [](unsigned int code) {
        if (code == 2) throw std::runtime_error("no such code");
    };
    EXPECT_EQ(messageOfInit(), "no such code");
    EXPECT_TRUE(server.config.isCrsConfigured("urn:ogc:def:crs,crs:EPSG::1"));
    EXPECT_THAT(server.config.getConfiguredCrsIdentifiers(), ElementsAre("1", "EPSG:1"));
    EXPECT_THAT(server.journal.names, ElementsAre("EPSG:1", "EPSG:2"));
    EXPECT_FALSE(isInitialised());
}

TEST_F(InitFailureTest, AtAUrnLeavesTheNamesBeforeItRegistered) {
    server.creator->onUrn = [](const std::string& urn) {
        if (urn == "urn:ogc:def:crs:EPSG::2") throw std::runtime_error("no such URN");
    };
    EXPECT_EQ(messageOfInit(), "no such URN");
    for (const char* const name : {"A", "EPSG:2", "urn:EPSG:geographicCRS:2", "urn:x-ogc:def:crs:EPSG:6.12:2"})
        EXPECT_TRUE(server.config.isCrsConfigured(name)) << name;
    EXPECT_FALSE(server.config.isCrsConfigured("urn:ogc:def:crs,crs:EPSG::2"));
    EXPECT_NE(server.config.getFromCodeCache("2", false), nullptr);
    EXPECT_FALSE(server.config.isCrsConfigured(3U));
}

TEST_F(InitFailureTest, LosesNoCrs) {
    server.creator->onUrn = [](const std::string& urn) {
        if (urn == "urn:ogc:def:crs:EPSG::2") throw std::runtime_error("no such URN");
    };
    EXPECT_THROW(server.config.init(), std::runtime_error);
    server.destroy();
    EXPECT_EQ(server.journal.held(), 0U);
}

TEST_F(InitFailureTest, CanBeMadeGood) {
    server.creator->onCode = [](unsigned int code) {
        if (code == 2) throw std::runtime_error("no such code");
    };
    EXPECT_THROW(server.config.init(), std::runtime_error);
    server.creator->onCode = nullptr;
    server.config.init();
    EXPECT_TRUE(server.config.isCrsConfigured("EPSG:3"));
    EXPECT_TRUE(isInitialised());
}

TEST_F(InitFailureTest, OfAReinitialisationLeavesTheConfigurationMarkedInitialised) {
    server.config.init();
    server.creator->onInit = [] { throw std::runtime_error("no directory"); };
    EXPECT_EQ(messageOf<std::runtime_error>([this] { server.config.reinit(); }), "no directory");
    EXPECT_THAT(server.config.getConfiguredCrsIdentifiers(), IsEmpty());
    EXPECT_FALSE(server.config.isCrsConfigured("EPSG:1"));
    EXPECT_FALSE(server.config.isCrsConfigured(1U));
    server.creator->onInit = nullptr;
    EXPECT_TRUE(isInitialised());
}

// A CRS without a code can be made and has an identifier, but no text form.
TEST(EntryWithoutACodeTest, FailsWithWhatCameBeforeItsTextFormRegistered) {
    JournaledConfig server;
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

}  // namespace
}  // namespace CoordinateTransformation
