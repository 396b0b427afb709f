// How long does createFromName take for a configured name, compared with a bare map, and for a name that is not
// configured?

#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "CoordinateTransformation/CoordinateTransformation.h"
#include "benchmarks/ProjDirectory.h"
#include "benchmarks/Ratios.h"

using namespace CoordinateTransformation;

namespace {

constexpr unsigned int CONFIGURED_CRS = 6500;

// The names of a configured CRS in the name cache.
std::vector<std::string> namesOf(const std::string& code) {
    return {"EPSG:" + code,
            "urn:ogc:def:crs:EPSG::" + code,
            "EPSG:" + code + ";EN;1",
            code,
            "urn:EPSG:geographicCRS:" + code,
            "urn:ogc:def:crs:EPSG:6.12:" + code,
            "urn:x-ogc:def:crs:EPSG:6.12:" + code,
            "urn:ogc:def:crs,crs:EPSG::" + code};
}

std::vector<std::string> drawNames(const ProjDirectory& directory, std::size_t form) {
    std::minstd_rand random(1);
    std::vector<std::string> names(4096);
    for (std::string& name : names) name = namesOf(directory.code(static_cast<unsigned int>(random())))[form];
    return names;
}

template <typename Look>
void lookUpAll(benchmark::State& state, const std::vector<std::string>& names, Look look) {
    std::size_t next = 0;
    for (auto _ : state) look(names[next++ % names.size()]);
}

void measureMap(benchmark::State& state, const std::map<std::string, void*>& names,
                const std::vector<std::string>& drawn) {
    lookUpAll(state, drawn, [&names](const std::string& name) {
        void* found = names.find(name)->second;
        benchmark::DoNotOptimize(found);
    });
}

void measureCreateFromName(benchmark::State& state, const CrsConfig& config, const std::vector<std::string>& drawn) {
    const CrsCreator& creator = config.getCreator();
    lookUpAll(state, drawn, [&creator](const std::string& name) {
        const Crs crs = creator.createFromName(name, true, true);
        benchmark::DoNotOptimize(crs.get());
    });
}

}  // namespace

int main(int argc, char** argv) {
    const ProjDirectory directory(CONFIGURED_CRS);
    const std::unique_ptr<CrsConfig> config(CrsConfig::createConfigFromId("proj4"));
    config->setConfigProperty("Proj4ConfigDir", directory.getPath());
    std::map<std::string, void*> names;
    for (unsigned int i = 0; i < CONFIGURED_CRS; ++i) {
        config->addCrsConfigData(CrsConfigData("EPSG:" + directory.code(i)));
        for (const std::string& name : namesOf(directory.code(i))) names.emplace(name, &names);
    }
    config->init();

    const auto add = [](const std::string& name, auto measure) { benchmark::RegisterBenchmark(name.c_str(), measure); };
    for (const std::size_t form : {0U, 1U, 3U, 6U}) {
        const std::vector<std::string> drawn = drawNames(directory, form);
        add(drawn[0] + "/map", [&names, drawn](benchmark::State& state) { measureMap(state, names, drawn); });
        add(drawn[0] + "/createFromName",
            [&config, drawn](benchmark::State& state) { measureCreateFromName(state, *config, drawn); });
    }
    // This version is not registered, so each URN is parsed, bound and copied.
    std::vector<std::string> uncached;
    for (unsigned int i = 0; i < 512; ++i) uncached.push_back("urn:ogc:def:crs:EPSG:9.9:" + directory.code(i));
    add("urn that is not cached/createFromName",
        [&config, uncached](benchmark::State& state) { measureCreateFromName(state, *config, uncached); });

    Ratios ratios;
    ratios.compare("createFromName", "map");
    return runAndCompare(argc, argv, ratios);
}
