// Prints which axis comes first under each name, and puts the longitude first for one request.

#include <cstdio>
#include <memory>
#include <sstream>

#include "CoordinateTransformation/CoordinateTransformation.h"

using namespace CoordinateTransformation;

namespace {

constexpr char FRAGMENT[] = R"(
    <CrsConfiguration>
      <CRS>4326</CRS>
      <CRS>CRS:84</CRS>
      <CRS>31467</CRS>
      <CRS mapToEpsgCode="31467" axisOrder="EN">GK3-EN</CRS>
      <CRS mapToEpsgCode="25832" axisOrder="NE">UTM32-NE</CRS>
      <CRS mapToEpsgCode="3857" axisOrder="ne">MERCATOR</CRS>
      <CRS axisOrder="EN">4258</CRS>
    </CrsConfiguration>)";

void printAxisOrders(const CrsCreator& creator) {
    for (const char* name : {"EPSG:4326", "urn:ogc:def:crs:EPSG::4326", "http://www.opengis.net/gml/srs/epsg.xml#4326",
                             "CRS:84", "EPSG:31467", "GK3-EN", "UTM32-NE", "EPSG:25832", "MERCATOR", "EPSG:4258"}) {
        const Crs crs = creator.createFromName(name, true, true);
        std::printf("%-45s %s\n", name, crs->isAxisOrderEastNorthOrLonLat() ? "EN" : "NE");
    }
}

// Changes the handle's own copy; the CRS that other threads use keeps its order.
void printBothOrders(const CrsCreator& creator) {
    const Crs utm = creator.createFromName("EPSG:25832", true, true);
    Crs geographic = creator.createFromName("EPSG:4326", true, true);
    for (const char* order : {"latitude first ", "longitude first"}) {
        double x = 500000.0, y = 5538630.703;
        utm->transformTo(geographic.get(), x, y);
        std::printf("%s %.6f %.6f\n", order, x, y);
        geographic.forceWmsAxisOrder();
    }
}

}  // namespace

int main(int argc, char** argv) {
    const std::unique_ptr<CrsConfig> config(CrsConfig::createDefaultConfigOrFromEnvVar());
    if (argc > 1) config->setConfigProperty("Proj4ConfigDir", argv[1]);  // or QUARVELSRV_PROJ4_CONF_DIR
    std::istringstream fragment(FRAGMENT);
    config->configure(fragment);
    config->init();
    printAxisOrders(config->getCreator());
    printBothOrders(config->getCreator());
}
