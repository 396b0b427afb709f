#include <cstdio>
#include <memory>

#include "CoordinateTransformation/CoordinateTransformation.h"

using namespace CoordinateTransformation;

int main(int argc, char** argv) {
    const std::unique_ptr<CrsConfig> config(CrsConfig::createDefaultConfigOrFromEnvVar());
    if (argc > 1) config->setConfigProperty("Proj4ConfigDir", argv[1]);  // the PROJ directory
    config->addCrsConfigData(CrsConfigData("EPSG:4326"));
    config->addCrsConfigData(CrsConfigData("UTM32", "25832"));
    config->init();

    const Crs source = config->getCreator().createFromName("urn:ogc:def:crs:EPSG::4326", true, true);
    const Crs target = config->getCreator().createFromName("UTM32", true, true);
    double x = 50.0, y = 9.0;  // EPSG:4326 has the latitude first
    source->transformTo(target.get(), x, y);
    std::printf("%s: %.3f %.3f\n", target->getAliasOrAsOgcURN(nullptr, false).c_str(), x, y);
}
