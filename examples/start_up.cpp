// Initialises the library as a server does, from an XML fragment and a PROJ directory, and reports failures. The PROJ
// directory is the argument or the value of QUARVELSRV_PROJ4_CONF_DIR.

#include <cstdio>
#include <memory>
#include <sstream>
#include <string>

#include "CoordinateTransformation/CoordinateTransformation.h"

using namespace CoordinateTransformation;

namespace {

constexpr char FRAGMENT[] = R"(
    <CrsConfiguration>
      <CRS numberOfDecimalPlaces="8">4326</CRS>
      <CRS>CRS:84</CRS>
      <CRS mapToEpsgCode="25832" axisOrder="NE">UTM32-NE</CRS>
    </CrsConfiguration>
    <SRSList>
      <SRS>EPSG:27700*EPSG:5701</SRS>
      <EPSGCode>31467</EPSGCode>
    </SRSList>)";

using Configuration = std::unique_ptr<CrsConfig>;

// If `projDirectory` is empty, the library uses the environment variable.
Configuration startLibrary(const std::string& fragment, const std::string& projDirectory) {
    Configuration config(CrsConfig::createDefaultConfigOrFromEnvVar());
    if (!projDirectory.empty()) config->setConfigProperty("Proj4ConfigDir", projDirectory);
    std::istringstream document(fragment);
    config->configure(document);
    config->init();
    return config;
}

// Returns null after reporting a failure. The XML reader's error belongs to neither family of exceptions.
Configuration tryToStart(const char* occasion, const std::string& fragment, const std::string& projDirectory) {
    try {
        return startLibrary(fragment, projDirectory);
    } catch (const TransformationException& failure) {
        std::printf("%s: %s, %s\n", occasion, failure.getServiceExceptionCode().c_str(), failure.what());
    } catch (const QSHelpers::Exception& failure) {
        std::printf("%s: %s, %s\n", occasion, failure.getServiceExceptionCode().c_str(), failure.what());
    } catch (const std::exception& failure) {
        std::printf("%s: %s\n", occasion, failure.what());
    }
    return nullptr;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string projDirectory = argc > 1 ? argv[1] : "";
    tryToStart("wrong directory", FRAGMENT, "/no/such/directory");
    tryToStart("broken fragment", "<CrsConfiguration><CRS>4326", projDirectory);
    tryToStart("unknown code", "<SRSList><SRS>99999</SRS></SRSList>", projDirectory);
    const Configuration config = tryToStart("start", FRAGMENT, projDirectory);
    if (config == nullptr) return 1;
    std::printf("offered:");
    for (const std::string& name : config->getConfiguredCrsIdentifiers()) std::printf(" %s", name.c_str());
    std::printf("\n");
}
