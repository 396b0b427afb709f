// Reads the names of a compound CRS (British National Grid with heights above Ordnance Datum Newlyn), transforms a
// point with a height, and writes the CRS in every form.

#include <cstdio>
#include <memory>

#include "CoordinateTransformation/CoordinateTransformation.h"
#include "QuarvelSrv/SrsFormattingOptions.h"

using namespace CoordinateTransformation;

namespace {

void printCrs(const char* name, const AbstractCrs& crs) {
    std::printf("%-63s %uD, %u and %u, %s\n", name, crs.getDim(), crs.getPrimaryCode(), crs.getSecCompoundCode(),
                crs.getAliasOrIdentifier(false).c_str());
}

void printPoint(const AbstractCrs& crs, double x, double y, double z) {
    const int places = crs.isGeographic() ? 8 : 3;
    std::printf("%.*f %.*f %.3f in %s\n", places, x, places, y, z, crs.getAliasOrIdentifier(false).c_str());
}

// The vertical CRS is ignored: the result has a height above the ellipsoid of the target's datum.
void printThereAndBack(const AbstractCrs& source, const AbstractCrs& target, double x, double y, double z) {
    printPoint(source, x, y, z);
    source.transformTo(&target, x, y, z);
    printPoint(target, x, y, z);
    target.transformTo(&source, x, y, z);
    printPoint(source, x, y, z);
}

void printNames(const AbstractCrs& crs) {
    const QuarvelSrv::SrsFormattingOptions url{"", "", 2};
    const CRSindicationFormatInfo gml{1, "", "http://www.opengis.net/gml/srs/epsg.xml", "\x01", "\x01,\x02"};
    std::printf("  %s\n  %s\n  %s\n  %s\n", crs.getAliasOrAsOgcURN(nullptr, false).c_str(),
                crs.getAliasOrAsOgcURN(&url, false).c_str(), crs.getAliasOrAsFormat(gml, false).c_str(),
                crs.getAsText().c_str());
}

}  // namespace

int main(int argc, char** argv) {
    const std::unique_ptr<CrsConfig> config(CrsConfig::createDefaultConfigOrFromEnvVar());
    if (argc > 1) config->setConfigProperty("Proj4ConfigDir", argv[1]);  // or QUARVELSRV_PROJ4_CONF_DIR
    for (const char* name : {"EPSG:4979", "EPSG:27700", "EPSG:27700*EPSG:5701"})
        config->addCrsConfigData(CrsConfigData(name));
    config->init();
    const CrsCreator& creator = config->getCreator();

    for (const char* name : {"EPSG:27700*EPSG:5701", "27700*5701", "urn:ogc:def:crs,crs:EPSG::27700,crs:EPSG::5701",
                             "http://www.opengis.net/def/crs,crs/EPSG/0/27700,crs/EPSG/0/5701"})
        printCrs(name, *creator.createFromName(name, true, true).get());

    const Crs wgs84 = creator.createFromName("EPSG:4979", true, true);
    const Crs compound = creator.createFromName("27700*5701", true, true);
    printThereAndBack(*compound.get(), *wgs84.get(), 651409.903, 313177.270, 24.7);

    std::printf("written\n");
    printNames(*compound.get());

    Crs flat = compound;
    flat.forceDim2D();
    std::printf("written when reduced to two dimensions\n");
    printNames(*flat.get());

    Crs flatWgs84 = wgs84;
    flatWgs84.mod()->setDim(2);
    printCrs("EPSG:4979 reduced to two dimensions", *flatWgs84.get());
}
