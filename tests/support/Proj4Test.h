#pragma once

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "CoordinateTransformation/Proj4Crs.h"
#include "proj/AxisOrderTable.h"
#include "proj/Proj4Locks.h"
#include "proj/Proj4Transformer.h"
#include "tests/support/ClassicMoves.h"
#include "tests/support/FakeCrs.h"
#include "tests/support/TemporaryDirectory.h"

namespace TestSupport {

// Provides CRS that are bound to PROJ, with an "epsg" file and an axis-order table for the test.
class Proj4Test : public testing::Test {
protected:
    Proj4Test() {
        CoordinateTransformation::proj4DefCache.clear();
        CoordinateTransformation::axisOrderTable = {{4326, false}, {4979, false}, {31467, false}, {25832, true}};
        givenEpsg(
            "<4326> +proj=longlat +datum=WGS84 +no_defs <>\n<4979> +proj=longlat +datum=WGS84 +no_defs <>\n"
            "<4258> +proj=longlat +ellps=GRS80 +towgs84=0,0,0 +no_defs <>\n"
            "<3035> +proj=laea +lat_0=52 +lon_0=10 +x_0=4321000 +y_0=3210000 +ellps=GRS80 +towgs84=0,0,0 <>\n"
            "<25832> +proj=utm +zone=32 +ellps=GRS80 +towgs84=0,0,0 +units=m +no_defs <>\n"
            "<25833> +proj=utm +zone=33 +ellps=GRS80 +towgs84=0,0,0 +units=m +no_defs <>\n"
            "<31467> +proj=tmerc +lat_0=0 +lon_0=9 +k=1 +x_0=3500000 +y_0=0 +ellps=bessel "
            "+towgs84=598.1,73.7,418.2,0.202,0.045,-2.455,6.7 +units=m +no_defs <>\n");
    }
    ~Proj4Test() override { CoordinateTransformation::axisOrderTable.clear(); }

    void givenEpsg(const std::string& text) {
        directory.write("epsg", text);
        searchOnlyIn({directory.name()});
    }
    CoordinateTransformation::Proj4Crs crsOf(unsigned int primary, unsigned int secondary = 0,
                                             bool applyEpsgStandards = true) const {
        return {creator, *CoordinateTransformation::theProj4Transformer, primary, secondary, applyEpsgStandards};
    }
    CoordinateTransformation::Proj4Crs crsInOrder(unsigned int primary, bool eastNorth) const {
        CoordinateTransformation::Proj4Crs crs = crsOf(primary);
        crs.setAxisOrderEastNorthOrLonLat(eastNorth);
        return crs;
    }

    const TemporaryDirectory directory;
    const FakeCreator creator;
};

}  // namespace TestSupport
