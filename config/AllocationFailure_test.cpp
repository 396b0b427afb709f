// A separate program, because it replaces the global allocation functions.

#include "tests/support/AllocationFailure.h"

#include <cstddef>
#include <memory>
#include <sstream>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "CoordinateTransformation/CrsConfig.h"
#include "CoordinateTransformation/CrsConfigData.h"
#include "CoordinateTransformation/structured_exception.h"
#include "tests/support/TestConfig.h"

namespace CoordinateTransformation {
namespace {

using TestSupport::allocationsOf;

class ConfigWithCreator : public ExposedConfig {
public:
    ConfigWithCreator() { injectCreator(new TidyCreator(*this)); }
};

using Config = std::unique_ptr<ConfigWithCreator>;

// Names that are too long for a string's internal buffer.
constexpr char FRAGMENT[] = R"(
    <CrsConfiguration>
      <CRS numberOfDecimalPlaces="6">4326</CRS>
      <CRS mapToEpsgCode="31467" axisOrder="NE">urn:an-alias-that-no-small-buffer-holds</CRS>
      <CRS>EPSG:27700*EPSG:5701</CRS>
      <CRS mapToEpsgCode="4326">urn:another-alias-that-no-small-buffer-holds</CRS>
    </CrsConfiguration>)";

Config configured() {
    auto config = std::make_unique<ConfigWithCreator>();
    std::istringstream document(FRAGMENT);
    config->configure(document);
    return config;
}

Config initialised() {
    Config config = configured();
    config->init();
    return config;
}

TEST(ConfigAllocationFailureTest, LosesNothingWhenAConfigurationIsMade) {
    EXPECT_GT(allocationsOf([] { const CrsConfig config; }), 0);
    EXPECT_GT(allocationsOf([] { const Config config(new ConfigWithCreator); }), 2);
    EXPECT_GT(allocationsOf([] { const std::unique_ptr<CrsConfig> config(CrsConfig::createConfigFromId("proj4")); }),
              2);
}

TEST(ConfigAllocationFailureTest, LosesNothingWhenAFragmentIsRead) {
    const auto prepare = [] {
        return std::make_pair(std::make_unique<ConfigWithCreator>(), std::istringstream(FRAGMENT));
    };
    EXPECT_GT(allocationsOf(prepare, [](auto& state) { state.first->configure(state.second); }), 50);
}

TEST(ConfigAllocationFailureTest, LosesNothingWhenAConfigurationIsInitialised) {
    EXPECT_GT(allocationsOf(configured, [](const Config& config) { config->init(); }), 100);
}

TEST(ConfigAllocationFailureTest, LosesNothingWhenAFailedInitialisationIsRepeated) {
    for (long allocations = 0; allocations < 200; allocations += 7) {
        const long before = TestSupport::outstanding;
        {
            const Config config = configured();
            TestSupport::succeedsWith(allocations, [&] { config->init(); });
            config->init();
            EXPECT_NE(config->getFromNameCache("27700*5701", false), nullptr);
        }
        EXPECT_EQ(TestSupport::outstanding, before) << allocations;
    }
}

TEST(ConfigAllocationFailureTest, LosesNothingWhenConfigurationsAreMerged) {
    const auto prepare = [] {
        auto configs = std::make_pair(initialised(), std::make_unique<ConfigWithCreator>());
        configs.second->addCrsConfigData(CrsConfigData("25832"));
        configs.second->init();
        return configs;
    };
    EXPECT_GT(allocationsOf(prepare, [](auto& configs) { configs.first->merge(*configs.second); }), 100);
}

TEST(ConfigAllocationFailureTest, LosesNothingWhenACrsIsRegistered) {
    for (const unsigned int secondary : {0U, 5783U}) {
        EXPECT_GT(
            allocationsOf(initialised,
                          [secondary](const Config& config) {
                              config->cacheLongNameAndCode(config->getCreator().createFromCode(31467, secondary, true));
                          }),
            5);
    }
}

TEST(ConfigAllocationFailureTest, LosesNothingWhenACrsIsRegisteredTwice) {
    const auto prepare = [] {
        Config config = initialised();
        const AbstractCrs* const crs = config->getFromNameCache("EPSG:4326", true);
        return std::make_pair(std::move(config), crs);
    };
    EXPECT_EQ(allocationsOf(prepare, [](auto& state) { state.first->cacheLongNameAndCode(state.second); }), 0);
}

class CreationAllocationFailureTest : public testing::TestWithParam<const char*> {};

TEST_P(CreationAllocationFailureTest, LosesNothing) {
    const Config config = initialised();
    const std::string name = GetParam();
    allocationsOf([&] { config->getCreator().createFromName(name, false, true); });
    allocationsOf([&] { config->getCreator().createFromName(name, false, false).mod(); });
    allocationsOf([&] {
        const Crs crs = config->getCreator().createFromName(name, false, false);
        Crs copy(crs);
        copy = crs;
    });
}

TEST_P(CreationAllocationFailureTest, LosesNothingBesideItsFailure) {
    const Config config = initialised();
    const std::string name = GetParam();
    allocationsOf([&] {
        try {
            config->getCreator().createFromName(name, true, true);
        } catch (const structured_exception&) {
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Names, CreationAllocationFailureTest,
                         testing::Values("EPSG:4326", "EPSG:25832", "25832", "25832*5783", "EPSG:25832*EPSG:5783",
                                         "urn:ogc:def:crs:EPSG::25832",
                                         "urn:x-ogc:def:crs:EPSG:a-version-that-no-small-buffer-holds:25832",
                                         "urn:ogc:def:crs,crs:EPSG:1.0:25832,crs:EPSG:1.0:5783",
                                         "http://www.opengis.net/def/crs/EPSG/0/25832",
                                         "http://www.opengis.net/def/crs,crs/EPSG/0/25832,crs/EPSG/0/5783",
                                         "http://www.opengis.net/gml/srs/epsg.xml#25832", "urn:EPSG:geographicCRS:4258",
                                         "a name that nobody accepts, nor keeps without an allocation"));

TEST(CreationAllocationFailureOfTextTest, LosesNothing) {
    const Config config = initialised();
    for (const std::string text : {"EPSG:4326;NE;0.5", "EPSG:27700*EPSG:5701;EN;1;2"}) {
        const auto create = [&] {
            return std::unique_ptr<AbstractCrs>(config->getCreator().createFromSpecialTextFormat(text));
        };
        EXPECT_GT(allocationsOf([&] { create(); }), 0) << text;
        EXPECT_GT(allocationsOf([&] { create()->getAsText(); }), 0) << text;
    }
}

}  // namespace
}  // namespace CoordinateTransformation
