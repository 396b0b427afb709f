// Answers requests for a point that is stored in UTM. Each request names a CRS in another spelling; the response has
// the coordinates and the name of that CRS.

#include <cstdio>
#include <memory>
#include <sstream>
#include <string>

#include "CoordinateTransformation/CoordinateTransformation.h"
#include "QuarvelSrv/SrsFormattingOptions.h"

using namespace CoordinateTransformation;
using QSHelpers::convertNumericToText;

namespace {

constexpr char FRAGMENT[] = R"(
    <CrsConfiguration>
      <CRS numberOfDecimalPlaces="6">4326</CRS>
      <CRS>CRS:84</CRS>
      <CRS>25832</CRS>
      <CRS numberOfDecimalPlaces="1" mapToEpsgCode="31467">GK3</CRS>
    </CrsConfiguration>)";

// The decimal places of the configured entry, or else those of the unit.
int decimalPlaces(const CrsConfig& config, const AbstractCrs& crs) {
    const CrsConfigData* const entry = config.getEntryFor(crs);
    if (entry != nullptr && entry->getNumberOfDecimalPlaces()) return *entry->getNumberOfDecimalPlaces();
    return crs.isGeographic() ? CrsConfigData::DEFAULT_NUMBER_OF_PLACES_DEGREE
                              : CrsConfigData::DEFAULT_NUMBER_OF_PLACES_METER;
}

// Writes the CRS in the spelling of the request: alias, URN, URL or identifier.
std::string responseName(const std::string& requested, const AbstractCrs& crs) {
    constexpr int URL_STYLE = 2;
    const bool isUrl = requested.compare(0, 5, "http:") == 0;
    if (!isUrl && requested.compare(0, 4, "urn:") != 0) return crs.getAliasOrIdentifier(true);
    const QuarvelSrv::SrsFormattingOptions options{"", "", isUrl ? URL_STYLE : 0};
    return crs.getAliasOrAsOgcURN(&options, true);
}

void answer(const CrsConfig& config, const char* name) {
    std::printf("%s\n", name);
    try {
        const Crs stored = config.getCreator().createFromName("EPSG:25832", true, true);
        const Crs wanted = config.getCreator().createFromName(name, true, true);
        double x = 500000.0, y = 5538630.703;  // easting, northing
        stored->transformTo(wanted.get(), x, y);
        const int places = decimalPlaces(config, *wanted.get());
        std::printf("    %s %s  %s\n", convertNumericToText(x, places, false).c_str(),
                    convertNumericToText(y, places, false).c_str(), responseName(name, *wanted.get()).c_str());
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
    std::istringstream fragment(FRAGMENT);
    config->configure(fragment);
    config->init();
    for (const char* name :
         {"EPSG:4326", "urn:ogc:def:crs:EPSG:6.12:4326", "http://www.opengis.net/def/crs/EPSG/0/4326",
          "http://www.opengis.net/gml/srs/epsg.xml#4326", "CRS:84", "EPSG:25832", "GK3", "epsg:4326", "EPSG:3395",
          "urn:ogc:def:crs:EPSG::43x6"})
        answer(*config, name);
}
