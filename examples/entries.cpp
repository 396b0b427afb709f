// Adds entries to a configuration without XML.

#include <cstdio>
#include <memory>
#include <string>

#include "CoordinateTransformation/CoordinateTransformation.h"

using namespace CoordinateTransformation;

int main(int argc, char** argv) {
    const std::unique_ptr<CrsConfig> config(CrsConfig::createDefaultConfigOrFromEnvVar());
    if (argc > 1) config->setConfigProperty("Proj4ConfigDir", argv[1]);  // or QUARVELSRV_PROJ4_CONF_DIR
    config->addCrsConfigData(CrsConfigData("urn:ogc:def:crs:EPSG::4326"));
    config->addCrsConfigData(CrsConfigData("27700*5701"));
    config->addCrsConfigData(CrsConfigData("UTM32", "25832"));
    if (!config->addCrsConfigData(CrsConfigData("UTM32", "25832"))) std::puts("UTM32 is there already");
    std::printf("before init: %s\n", config->isCrsConfigured(4326) ? "configured" : "not configured");
    config->init();
    std::printf("after init: %s\n", config->isCrsConfigured(4326) ? "configured" : "not configured");
    for (const std::string& name : config->getConfiguredCrsIdentifiers()) std::printf("%s\n", name.c_str());
}
