#include "tools/crsctl/start/Session.h"

#include <sstream>

#include <boost/property_tree/xml_parser.hpp>

#include "text/InitFile.h"
#include "tools/crsctl/start/Failures.h"
#include "tools/crsctl/start/ProjDirectory.h"
#include "tools/crsctl/start/TextFile.h"

namespace crsctl {

using CoordinateTransformation::CrsConfig;
using CoordinateTransformation::PROJ_DIRECTORY_PROPERTY;

namespace {

void initialise(CrsConfig& config, const std::string& place) {
    try {
        config.init();
    } catch (const std::exception& failure) {
        throw SetUpError(place + failure.what());
    }
}

void configure(CrsConfig& config, const std::string& path, const std::string& text) {
    std::istringstream document(text);
    try {
        config.configure(document);
    } catch (const boost::property_tree::xml_parser_error& failure) {
        throw SetUpError(inputName(path) + ":" + std::to_string(failure.line()) + ": " + failure.message());
    }
}

}  // namespace

std::unique_ptr<CrsConfig> makeConfig(const std::string& projDirOption) {
    try {
        std::unique_ptr<CrsConfig> config(CrsConfig::createDefaultConfigOrFromEnvVar());
        const std::string directory = projDirectoryProperty(projDirectoryChoice(projDirOption));
        if (!directory.empty()) config->setConfigProperty(PROJ_DIRECTORY_PROPERTY, directory);
        return config;
    } catch (const std::exception& failure) {
        throw SetUpError(failure.what());
    }
}

// A start without entries comes first, so that a bad PROJ directory is not blamed on the configuration file.
Session::Session(const CommonOptions& options)
    : crsConfig(makeConfig(options.projDir)), configured(!options.configFile.empty()) {
    initialise(*crsConfig, "");
    if (!configured) return;
    configure(*crsConfig, options.configFile, readTextFile(options.configFile));
    initialise(*crsConfig, inputName(options.configFile) + ": ");
}

}  // namespace crsctl
