// Answers requests for features. The box of a request is transformed to the CRS of the stored features, and the points
// of the features found are transformed to the CRS of the request. No request waits for another.

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "CoordinateTransformation/CoordinateTransformation.h"

using namespace CoordinateTransformation;

namespace {

// `ordinates` holds easting, northing and, with three dimensions, height of each point.
struct Feature {
    const char* id;
    std::size_t dimensions;
    std::vector<double> ordinates;
    std::size_t points() const { return ordinates.size() / dimensions; }
};

const std::vector<Feature> STORED = {
    {"tree", 2, {500000, 5538630}},
    {"path", 3, {499900, 5538600, 312, 499950, 5538650, 318, 500010, 5538690, 321}},
    {"pond", 2, {500100, 5538500, 500160, 5538500, 500160, 5538560, 1e30, 5538560}},  // one point is damaged
};

bool touches(const Feature& feature, const Bounds& box) {
    for (std::size_t i = 0; i < feature.ordinates.size(); i += feature.dimensions) {
        const double x = feature.ordinates[i], y = feature.ordinates[i + 1];
        if (box.minX <= x && x <= box.maxX && box.minY <= y && y <= box.maxY) return true;
    }
    return false;
}

void write(Feature feature, PointTransformer& transformer, int places) {
    double* const x = feature.ordinates.data();
    const auto stride = static_cast<std::ptrdiff_t>(feature.dimensions);
    const std::size_t failures =
        transformer.transform(feature.points(), x, x + 1, feature.dimensions == 3 ? x + 2 : nullptr, stride);
    std::printf("    %s", feature.id);
    if (failures > 0)
        std::printf(" left out: %zu of its points cannot be transformed", failures);
    else
        for (const double ordinate : feature.ordinates) std::printf(" %.*f", places, ordinate);
    std::printf("\n");
}

void answer(const CrsCreator& creator, const char* srsName, const Bounds& requested) {
    std::printf("%s\n", srsName);
    try {
        const Crs stored = creator.createFromName("EPSG:25832", true, true);
        const Crs wanted = creator.createFromName(srsName, true, true);
        const Bounds search = PointTransformer(*wanted.get(), *stored.get()).transformBounds(requested);
        std::printf("    searched %.0f %.0f to %.0f %.0f\n", search.minX, search.minY, search.maxX, search.maxY);
        PointTransformer transformer(*stored.get(), *wanted.get());
        for (const Feature& feature : STORED)
            if (touches(feature, search)) write(feature, transformer, wanted->isGeographic() ? 6 : 2);
    } catch (const TransformationException& failure) {
        std::printf("    %s: %s\n", failure.getServiceExceptionCode().c_str(), failure.what());
    } catch (const QSHelpers::Exception& failure) {
        std::printf("    %s: %s\n", failure.getServiceExceptionCode().c_str(), failure.what());
    }
}

}  // namespace

int main(int argc, char** argv) {
    const std::unique_ptr<CrsConfig> config(CrsConfig::createDefaultConfigOrFromEnvVar());
    if (argc > 1) config->setConfigProperty("Proj4ConfigDir", argv[1]);  // or QUARVELSRV_PROJ4_CONF_DIR
    for (const char* code : {"4326", "25832", "31467"}) config->addCrsConfigData(CrsConfigData(code));
    config->init();
    answer(config->getCreator(), "EPSG:25832", {499000, 5538000, 500050, 5539000});
    answer(config->getCreator(), "urn:ogc:def:crs:EPSG::4326", {49.99, 8.99, 50.01, 9.01});  // latitude first
    answer(config->getCreator(), "EPSG:31467", {5540000, 3499000, 5541000, 3501000});        // northing first
    answer(config->getCreator(), "EPSG:4326", {91, 8, 95, 10});
    answer(config->getCreator(), "EPSG:3395", {0, 0, 1, 1});
}
