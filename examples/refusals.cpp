// Answers names that the server cannot use. Every failure of createFromName is the client's fault, so one function
// handles them all.

#include <cstdio>
#include <exception>
#include <memory>
#include <string>

#include "CoordinateTransformation/CoordinateTransformation.h"

using namespace CoordinateTransformation;

namespace {

// The text for the exception report; empty for a name that is accepted.
std::string refusal(const CrsCreator& creator, const std::string& name) {
    try {
        const Crs crs = creator.createFromName(name, true, true);
        return "";
    } catch (const TransformationException& failure) {
        return failure.getServiceExceptionCode() + ": " + failure.what();
    } catch (const QSHelpers::Exception& failure) {
        return failure.getServiceExceptionCode() + ": " + failure.what();
    } catch (const std::exception& failure) {
        return std::string("no code: ") + failure.what();
    }
}

}  // namespace

int main(int argc, char** argv) {
    const std::unique_ptr<CrsConfig> config(CrsConfig::createDefaultConfigOrFromEnvVar());
    if (argc > 1) config->setConfigProperty("Proj4ConfigDir", argv[1]);  // or QUARVELSRV_PROJ4_CONF_DIR
    config->addCrsConfigData(CrsConfigData("EPSG:4326"));
    config->init();
    const CrsCreator& creator = config->getCreator();
    for (const char* name : {"EPSG:4326", "EPSG:3395", "urn:ogc:def:crs:EPSG::abc", "EPSG:4326*5783"}) {
        const std::string text = refusal(creator, name);
        if (text.empty())
            std::printf("%s: accepted\n", name);
        else
            std::printf("%s: 400 InvalidParameterValue srsName\n    %s\n    %s\n", name, text.c_str(),
                        creator.explainName(name).text.c_str());
    }
}
