#include "tools/crsctl/start/Session.h"

#include <algorithm>
#include <iterator>
#include <sstream>
#include <utility>

#include <boost/property_tree/xml_parser.hpp>

#include "text/InitFile.h"
#include "tools/crsctl/start/Failures.h"
#include "tools/crsctl/start/ProjDirectory.h"
#include "tools/crsctl/start/TextFile.h"

namespace crsctl {

using CoordinateTransformation::Crs;
using CoordinateTransformation::CrsConfig;
using CoordinateTransformation::CrsCreator;
using CoordinateTransformation::PROJ_DIRECTORY_PROPERTY;

namespace {

void initialise(CrsConfig& config, const std::string& place) {
    try {
        config.init();
    } catch (const std::exception& failure) {
        throw SetUpError(place + failure.what());
    }
}

constexpr const char* CRS84_NAMES[] = {"CRS:84", "OGC:CRS84", "urn:ogc:def:crs:OGC:1.3:CRS84",
                                       "urn:ogc:def:crs:OGC::CRS84", "http://www.opengis.net/def/crs/OGC/1.3/CRS84"};

// What a server's configuration would hold.
std::string crs84Configuration() {
    std::string text = "<CrsConfiguration>";
    for (const char* const name : CRS84_NAMES)
        text += std::string("<CRS mapToEpsgCode='4326' axisOrder='EN'>") + name + "</CRS>";
    return text + "</CrsConfiguration>";
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

bool isCrs84(const std::string& name) {
    return std::find(std::begin(CRS84_NAMES), std::end(CRS84_NAMES), name) != std::end(CRS84_NAMES);
}

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
    : projDir(options.projDir), crsConfig(makeConfig(options.projDir)), configured(!options.configFile.empty()) {
    initialise(*crsConfig, "");
    if (!configured) return;
    configure(*crsConfig, options.configFile, readTextFile(options.configFile));
    initialise(*crsConfig, inputName(options.configFile) + ": ");
}

Crs Session::createFromName(const std::string& name, bool throwIfMissing) const {
    return creatorFor(name).createFromName(name, throwIfMissing, configured);
}

const CrsCreator& Session::creatorFor(const std::string& name) const {
    if (configured || !isCrs84(name)) return creator();
    if (crs84Config == nullptr) {
        std::unique_ptr<CrsConfig> config = makeConfig(projDir);
        std::istringstream document(crs84Configuration());
        config->configure(document);
        config->init();
        crs84Config = std::move(config);
    }
    return crs84Config->getCreator();
}

}  // namespace crsctl
