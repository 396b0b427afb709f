// How long does a point take, compared with direct calls of PROJ and with GDAL?

#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "CoordinateTransformation/CoordinateTransformation.h"
#include "benchmarks/MeasuredPairs.h"
#include "benchmarks/Ratios.h"
#include "proj/classic/ProjHandles.h"

#if defined(COORDTRANS_HAVE_GDAL)
#include <ogr_spatialref.h>
#endif

using namespace CoordinateTransformation;
using ClassicProj::ProjPtr;

namespace {

constexpr std::size_t POINTS = 1024;

template <typename Transform>
void transformAll(benchmark::State& state, const std::vector<Point>& points, Transform transform) {
    std::size_t next = 0;
    for (auto _ : state) {
        Point point = points[next++ % points.size()];
        transform(point.x, point.y);
        benchmark::DoNotOptimize(point);
    }
}

void measureLibrary(benchmark::State& state, const CrsConfig& config, const MeasuredPair& pair) {
    const Crs source = config.getCreator().createFromName(pair.source, true, true);
    const Crs target = config.getCreator().createFromName(pair.target, true, true);
    std::vector<Point> points = drawPoints(pair, POINTS);
    if (!source->isAxisOrderEastNorthOrLonLat())
        for (Point& point : points) std::swap(point.x, point.y);
    const AbstractCrs* const from = source.get();
    const AbstractCrs* const to = target.get();
    transformAll(state, points, [from, to](double& x, double& y) { from->transformTo(to, x, y); });
}

// The direct call takes and returns radians. The library also converts degrees.
void measureProj(benchmark::State& state, const MeasuredPair& pair) {
    const ProjPtr<PJ_CONTEXT> context(proj_context_create());
    const ProjPtr<PJ> operation(proj_create(context.get(), pair.operation));
    std::vector<Point> points = drawPoints(pair, POINTS);
    if (std::string(pair.source) == "4326")
        for (Point& point : points) point = {point.x * RADIANS_PER_DEGREE, point.y * RADIANS_PER_DEGREE};
    transformAll(state, points, [proj = operation.get(), &pair](double& x, double& y) {
        const PJ_COORD moved = proj_trans(proj, pair.direction, proj_coord(x, y, 0, HUGE_VAL));
        x = moved.xy.x;
        y = moved.xy.y;
    });
}

void measureProjCrsToCrs(benchmark::State& state, const MeasuredPair& pair) {
    const ProjPtr<PJ_CONTEXT> context(proj_context_create());
    const ProjPtr<PJ> found(proj_create_crs_to_crs(context.get(), ("EPSG:" + std::string(pair.source)).c_str(),
                                                   ("EPSG:" + std::string(pair.target)).c_str(), nullptr));
    const ProjPtr<PJ> operation(proj_normalize_for_visualization(context.get(), found.get()));
    transformAll(state, drawPoints(pair, POINTS), [proj = operation.get()](double& x, double& y) {
        const PJ_COORD moved = proj_trans(proj, PJ_FWD, proj_coord(x, y, 0, HUGE_VAL));
        x = moved.xy.x;
        y = moved.xy.y;
    });
}

#if defined(COORDTRANS_HAVE_GDAL)
void measureGdal(benchmark::State& state, const MeasuredPair& pair) {
    OGRSpatialReference source;
    OGRSpatialReference target;
    source.importFromEPSG(std::stoi(pair.source));
    target.importFromEPSG(std::stoi(pair.target));
    source.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    target.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    const std::unique_ptr<OGRCoordinateTransformation> transformation(
        OGRCreateCoordinateTransformation(&source, &target));
    transformAll(state, drawPoints(pair, POINTS),
                 [&transformation](double& x, double& y) { transformation->Transform(1, &x, &y); });
}
#endif

void registerCase(const CrsConfig& config, const MeasuredPair& pair) {
    const std::string name = std::string(pair.source) + ">" + pair.target + "/";
    const auto add = [&name](const char* variant, auto measure) {
        benchmark::RegisterBenchmark((name + variant).c_str(), measure);
    };
    add("library", [&config, pair](benchmark::State& state) { measureLibrary(state, config, pair); });
    add("proj_trans", [pair](benchmark::State& state) { measureProj(state, pair); });
    add("crs_to_crs", [pair](benchmark::State& state) { measureProjCrsToCrs(state, pair); });
#if defined(COORDTRANS_HAVE_GDAL)
    add("gdal", [pair](benchmark::State& state) { measureGdal(state, pair); });
#endif
}

// CRS with compatible codes need neither a lock nor PROJ.
void measureCompatible(benchmark::State& state, const CrsConfig& config) {
    const Crs source = config.getCreator().createFromName("CRS:84", true, true);
    const Crs target = config.getCreator().createFromName("4979", true, true);
    const AbstractCrs* const from = source.get();
    const AbstractCrs* const to = target.get();
    transformAll(state, drawPoints(PAIRS[4], POINTS), [from, to](double& x, double& y) {
        double z = x;
        from->transformTo(to, x, y, z);
        benchmark::DoNotOptimize(z);
    });
}

}  // namespace

int main(int argc, char** argv) {
    const std::unique_ptr<CrsConfig> config(CrsConfig::createConfigFromId("proj4"));
    config->setConfigProperty("Proj4ConfigDir", COORDTRANS_SOURCE_DIR "/data/proj");
    for (const char* code : {"4326", "4979", "25832", "3857", "31467", "2154", "CRS:84"})
        config->addCrsConfigData(CrsConfigData(code));
    config->init();

    Ratios ratios;
    for (const MeasuredPair& pair : PAIRS) registerCase(*config, pair);
    benchmark::RegisterBenchmark("4326>4979 with axis exchange/library",
                                 [&config](benchmark::State& state) { measureCompatible(state, *config); });
    ratios.compare("library", "proj_trans");
    ratios.compare("library", "crs_to_crs");
    ratios.compare("library", "gdal");
    return runAndCompare(argc, argv, ratios);
}
