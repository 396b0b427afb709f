// A module that starts the library and transforms one point. Its host does not link the library.

#include <cmath>
#include <cstdio>
#include <exception>

#include "tests/support/ProcessServer.h"

extern "C" __attribute__((visibility("default"))) int transformAPoint(const char* projDirectory, double longitude0);

// Returns 0 if the result fits the PROJ directory, whose central meridian is `longitude0`.
int transformAPoint(const char* projDirectory, double longitude0) {
    using namespace ProcessTest;
    try {
        const auto config = startServer(projDirectory);
        // On the central meridian the easting is the false easting, at any latitude.
        const Point point = moved(*config, "EPSG:4326", "EPSG:25832", {52, longitude0});
        try {
            moved(*config, "EPSG:4326", "EPSG:25832", {0, 99});
            return 3;
        } catch (const CoordinateTransformation::TransExecException& failure) {
            if (failure.getCatalogMessage() == nullptr) return 4;
        }
        const Point inArray = movedInArray(*config, "EPSG:4326", "EPSG:25832", {52, longitude0});
        if (inArray.x != point.x || inArray.y != point.y) return 5;
        return std::abs(point.x - 500000) < 1e-6 ? 0 : 1;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 2;
    }
}
