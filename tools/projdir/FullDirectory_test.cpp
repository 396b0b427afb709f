// The directory that the build makes of the whole registry.

#include <algorithm>
#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CoordinateTransformation/CoordinateTransformation.h"
#include "proj/classic/ProjHandles.h"

namespace {

using ClassicProj::ProjPtr;
using CoordinateTransformation::AbstractCrs;
using CoordinateTransformation::CrsConfig;
using CoordinateTransformation::CrsConfigData;
using testing::HasSubstr;
using testing::StartsWith;

// The registry of PROJ 9.1.1 has about 6,400 expressible CRS; later ones have more.
constexpr std::size_t LEAST_CODES = 6400;

std::vector<std::string> readLines(const std::string& name) {
    std::ifstream file(std::string(PROJ_FULL) + "/" + name);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
}

std::vector<int> readDefinedCodes() {
    std::vector<int> codes;
    for (const std::string& line : readLines("epsg"))
        if (line.front() == '<') codes.push_back(std::stoi(line.substr(1)));
    return codes;
}

std::map<int, std::string> readAxisOrders() {
    std::map<int, std::string> orders;
    for (const std::string& line : readLines("epsg-axisorder.csv"))
        orders[std::stoi(line)] = line.substr(line.find(';') + 1);
    return orders;
}

// As a server does at its start.
std::unique_ptr<CrsConfig> startLibrary(const std::vector<int>& codes) {
    std::unique_ptr<CrsConfig> config(CrsConfig::createConfigFromId("proj4"));
    config->setConfigProperty("Proj4ConfigDir", PROJ_FULL);
    for (const int code : codes)
        if (code != 0) config->addCrsConfigData(CrsConfigData("EPSG:" + std::to_string(code)));
    config->init();
    return config;
}

std::string readFirstAxis(PJ_CONTEXT* context, const PJ* crs) {
    const ProjPtr<PJ> axes(proj_crs_get_coordinate_system(context, crs));
    const char* name = "";
    proj_cs_get_axis_info(context, axes.get(), 0, &name, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    return name;
}

// The horizontal part of a compound CRS; any other CRS itself.
ProjPtr<PJ> createHorizontal(PJ_CONTEXT* context, int code) {
    ProjPtr<PJ> crs(proj_create(context, ("EPSG:" + std::to_string(code)).c_str()));
    if (proj_get_type(crs.get()) != PJ_TYPE_COMPOUND_CRS) return crs;
    return ProjPtr<PJ>(proj_crs_get_sub_crs(context, crs.get(), 0));
}

// Whether PROJ exchanges the first two axes to show coordinates on a map.
bool isNorthFirst(PJ_CONTEXT* context, int code) {
    const ProjPtr<PJ> crs = createHorizontal(context, code);
    const ProjPtr<PJ> shown(proj_normalize_for_visualization(context, crs.get()));
    return readFirstAxis(context, crs.get()) != readFirstAxis(context, shown.get());
}

TEST(FullDirectoryTest, NamesItsRegistry) {
    EXPECT_THAT(readLines("epsg").front(), StartsWith("# EPSG Geodetic Parameter Dataset v"));
}

TEST(FullDirectoryTest, HasTheWholeRegistryInCodeOrder) {
    const std::vector<int> codes = readDefinedCodes();
    EXPECT_GE(codes.size(), LEAST_CODES);
    EXPECT_TRUE(std::is_sorted(codes.begin(), codes.end()));
    EXPECT_EQ(std::set<int>(codes.begin(), codes.end()).size(), codes.size());
}

TEST(FullDirectoryTest, HasANameAboveEveryDefinition) {
    std::string previous;
    for (const std::string& line : readLines("epsg")) {
        if (line.front() == '<') {
            EXPECT_THAT(previous, StartsWith("# ")) << line;
        }
        previous = line;
    }
}

TEST(FullDirectoryTest, HasOneAxisOrderForEveryDefinitionAndNoOther) {
    std::vector<int> ordered;
    for (const auto& [code, order] : readAxisOrders()) {
        EXPECT_TRUE(order == "en" || order == "ne") << code;
        ordered.push_back(code);
    }
    EXPECT_EQ(ordered, readDefinedCodes());
}

TEST(FullDirectoryTest, EndsEveryLine) {
    for (const char* name : {"epsg", "epsg-axisorder.csv", "epsg-info.csv"}) {
        std::ifstream file(std::string(PROJ_FULL) + "/" + name);
        file.seekg(-1, std::ios::end);
        EXPECT_EQ(file.get(), '\n') << name;
    }
}

TEST(FullDirectoryTest, IsBoundWholeByTheLibrary) {
    const std::vector<int> codes = readDefinedCodes();
    const std::unique_ptr<CrsConfig> config = startLibrary(codes);
    const auto orders = readAxisOrders();
    for (const int code : codes) {
        if (code == 0) continue;
        const AbstractCrs* const crs = config->getFromCodeCache(std::to_string(code), true);
        EXPECT_EQ(crs->isAxisOrderEastNorthOrLonLat(), orders.at(code) == "en") << code;
    }
}

std::map<int, std::string> readDefinitions(const std::string& directory) {
    std::ifstream file(directory + "/epsg");
    std::map<int, std::string> definitions;
    for (std::string line; std::getline(file, line);)
        if (line.front() == '<') definitions[std::stoi(line.substr(1))] = line;
    return definitions;
}

TEST(FullDirectoryTest, GivesEveryDefinitionItsDatum) {
    for (const auto& [code, definition] : readDefinitions(PROJ_FULL)) {
        if (code != 0) {
            EXPECT_THAT(definition, HasSubstr(" +datum_id=EPSG:")) << code;
        }
    }
}

// A compound CRS is bound by its horizontal part.
TEST(FullDirectoryTest, DefinesCompoundsAsTheirHorizontalParts) {
    const ProjPtr<PJ_CONTEXT> context(proj_context_create());
    const auto definitions = readDefinitions(PROJ_FULL);
    std::size_t compounds = 0;
    for (const auto& [code, definition] : definitions) {
        const ProjPtr<PJ> crs(proj_create(context.get(), ("EPSG:" + std::to_string(code)).c_str()));
        if (code == 0 || proj_get_type(crs.get()) != PJ_TYPE_COMPOUND_CRS) continue;
        const ProjPtr<PJ> horizontal = createHorizontal(context.get(), code);
        const int part = std::stoi(proj_get_id_code(horizontal.get(), 0));
        EXPECT_EQ(definition.substr(definition.find(' ')), definitions.at(part).substr(definitions.at(part).find(' ')))
            << code;
        ++compounds;
    }
    EXPECT_GE(compounds, 370U);
}

TEST(FullDirectoryTest, DescribesEveryDefinition) {
    const std::vector<std::string> lines = readLines("epsg-info.csv");
    EXPECT_THAT(lines.front(), StartsWith("code,name,kind,area,west,"));
    std::vector<int> described = {0};
    for (std::size_t i = 1; i < lines.size(); ++i) described.push_back(std::stoi(lines[i]));
    EXPECT_EQ(described, readDefinedCodes());
}

#if PROJ_VERSION_MAJOR == 9 && PROJ_VERSION_MINOR == 1
// The directory that comes with the sources is made with this version.
TEST(FullDirectoryTest, HasTheDefinitionsOfTheSmallDirectory) {
    const auto definitions = readDefinitions(PROJ_FULL);
    for (const auto& [code, definition] : readDefinitions(COORDTRANS_SOURCE_DIR "/data/proj"))
        EXPECT_EQ(definition, definitions.at(code)) << code;
}
#endif

// Geocentric axes are not exchanged; PROJ gives the same answer for them.
TEST(FullDirectoryTest, HasTheAxisOrdersOfPROJ) {
    const ProjPtr<PJ_CONTEXT> context(proj_context_create());
    for (const auto& [code, order] : readAxisOrders()) {
        if (code != 0) {
            EXPECT_EQ(order, isNorthFirst(context.get(), code) ? "ne" : "en") << code;
        }
    }
}

}  // namespace
