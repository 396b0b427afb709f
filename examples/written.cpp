// Writes CRS in every form that a response may use.

#include <cstdio>
#include <memory>
#include <string>

#include "CoordinateTransformation/CoordinateTransformation.h"
#include "QuarvelSrv/SrsFormattingOptions.h"

using namespace CoordinateTransformation;

namespace {

void print(const char* form, const std::string& text) { std::printf("  %-20s %s\n", form, text.c_str()); }

// Options are a version, a prefix and a style. In templates the characters 1 and 2 are the codes.
void printForms(const CrsCreator& creator, const char* name) {
    const QuarvelSrv::SrsFormattingOptions version{"9.9", "", 0}, prefix{"", "EPSG:", 0}, url{"", "", 2};
    const CRSindicationFormatInfo gml{1, "", "epsg.xml", "\1", "\1+\2"};
    const Crs crs = creator.createFromName(name, true, true);
    std::printf("%s\n", name);
    print("alias or identifier", crs->getAliasOrIdentifier(true));
    print("identifier", crs->getAliasOrIdentifier(false));
    print("OGC URN", crs->getAliasOrAsOgcURN(nullptr, false));
    print("with a version", crs->getAliasOrAsOgcURN(&version, false));
    print("OGC http URL", crs->getAliasOrAsOgcURN(&url, false));
    print("prefix and code", crs->getAliasOrAsOgcURN(&prefix, false));
    print("template URL", crs->getAliasOrAsFormat(gml, false));
    print("text form", crs->getAsText());
}

// Only the text form keeps axis order and scale factors.
void printRoundTrip(const CrsCreator& creator) {
    Crs crs = creator.createFromName("EPSG:4326", true, true);
    crs.forceWmsAxisOrder();
    crs.mod()->setPrimaryScaleFactor(0.5);
    const Crs again(creator.createFromSpecialTextFormat(crs->getAsText()));
    std::printf("%s is read as %s\n", crs->getAsText().c_str(), again->getAsText().c_str());
}

}  // namespace

int main(int argc, char** argv) {
    const std::unique_ptr<CrsConfig> config(CrsConfig::createDefaultConfigOrFromEnvVar());
    if (argc > 1) config->setConfigProperty("Proj4ConfigDir", argv[1]);  // or QUARVELSRV_PROJ4_CONF_DIR
    config->addCrsConfigData(CrsConfigData("EPSG:4326"));
    config->addCrsConfigData(CrsConfigData("UTM32", "25832"));
    config->addCrsConfigData(CrsConfigData("EPSG:27700*EPSG:5701"));
    config->init();
    for (const char* name : {"UTM32", "urn:ogc:def:crs:EPSG:6.12:25832", "EPSG:27700*EPSG:5701"})
        printForms(config->getCreator(), name);
    printRoundTrip(config->getCreator());
}
