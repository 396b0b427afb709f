// Lists the configured CRS for a capabilities document, each with the title and area of use from the PROJ directory.

#include <cstdio>
#include <memory>

#include "CoordinateTransformation/CoordinateTransformation.h"

using namespace CoordinateTransformation;

namespace {

void printTitle(const AbstractCrs& crs) {
    std::printf("%s\n", crs.getAliasOrAsOgcURN(nullptr, false).c_str());
    const CrsDescription* const known = CrsDescriptions::ofProjDirectory().find(crs.getPrimaryCode());
    if (known == nullptr) return;
    std::printf("    %s, unit %s\n", known->name.c_str(), known->unit.c_str());
    if (known->box)
        std::printf("    from %g %g to %g %g\n", known->box->west, known->box->south, known->box->east,
                    known->box->north);
    if (known->shiftAccuracy)
        std::printf("    within %g m of WGS 84 by %s\n", *known->shiftAccuracy, known->shiftSource.c_str());
}

}  // namespace

int main(int argc, char** argv) {
    const std::unique_ptr<CrsConfig> config(CrsConfig::createDefaultConfigOrFromEnvVar());
    if (argc > 1) config->setConfigProperty("Proj4ConfigDir", argv[1]);  // or QUARVELSRV_PROJ4_CONF_DIR
    for (const char* name : {"EPSG:4326", "EPSG:25832", "EPSG:27700*EPSG:5701"})
        config->addCrsConfigData(CrsConfigData(name));
    config->init();
    for (const CrsConfigData& entry : *config->getConfiguredCrs())
        printTitle(*config->getCreator().createFromName(entry.getIdentifier(), true, true).get());
}
