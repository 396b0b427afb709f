#include "tools/crsctl/Session.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <sstream>

#include <boost/property_tree/xml_parser.hpp>

#include "config/Fragment.h"
#include "names/CrsName.h"
#include "text/InitFile.h"

namespace crsctl {

using namespace CoordinateTransformation;

std::string inputName(const std::string& path) { return path == "-" ? STANDARD_INPUT : path; }

std::string readTextFile(const std::string& path) {
    const auto checked = [&path](bool succeeds) {
        if (!succeeds) throw SetUpError(inputName(path) + ": " + std::strerror(errno));
    };
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
        path == "-" ? stdin : std::fopen(path.c_str(), "re"),
        [](std::FILE* open) { return open == stdin ? 0 : std::fclose(open); });
    checked(file != nullptr);
    std::string content;
    std::array<char, 65536> block{};
    while (content.size() <= MAX_FRAGMENT_SIZE) {
        const std::size_t count = std::fread(block.data(), 1, block.size(), file.get());
        checked(std::ferror(file.get()) == 0);
        if (count == 0) break;
        content.append(block.data(), count);
    }
    return content;
}

std::string chosenProjDirectory(const ProjDirectoryChoice& choice) {
    if (!choice.option.empty()) return choice.option;
    if (!choice.environment.empty()) return choice.environment;
    return choice.builtInExists || choice.installed.empty() ? BUILT_IN_PROJ_DIRECTORY : choice.installed;
}

namespace {

// Returns the directory beside the program if it exists, so that an installation can be moved; otherwise the one
// that was configured for the installation.
std::string installedDirectory() {
    std::error_code failure;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", failure);
    const std::filesystem::path besideProgram =
        (program.parent_path() / COORDTRANS_PROGRAM_TO_PROJ_DIR).lexically_normal();
    if (!failure && std::filesystem::is_directory(besideProgram, failure)) return besideProgram.string();
    return COORDTRANS_INSTALLED_PROJ_DIR;
}

}  // namespace

std::string projDirectory(const std::string& option) {
    const char* const environment = std::getenv(PROJ_DIRECTORY_VARIABLE);
    std::error_code ignored;
    return chosenProjDirectory({option, environment == nullptr ? "" : environment,
                                std::filesystem::is_directory(BUILT_IN_PROJ_DIRECTORY, ignored), installedDirectory()});
}

namespace {

constexpr const char* CRS84_NAMES[] = {"CRS:84", "OGC:CRS84", "urn:ogc:def:crs:OGC:1.3:CRS84",
                                       "urn:ogc:def:crs:OGC::CRS84", "http://www.opengis.net/def/crs/OGC/1.3/CRS84"};

// Throws SetUpError, which names the file `path`, if the library does not start with the fragment `text`.
void startWith(const std::string& text, const std::string& path, CrsConfig& config) {
    std::istringstream document(text);
    try {
        config.configure(document);
        config.init();
    } catch (const boost::property_tree::xml_parser_error& failure) {
        throw SetUpError(inputName(path) + ":" + std::to_string(failure.line()) + ": " + failure.message());
    } catch (const std::exception& failure) {
        throw SetUpError(inputName(path) + ": " + failure.what());
    }
}

}  // namespace

bool isCrs84(const std::string& name) {
    return std::find(std::begin(CRS84_NAMES), std::end(CRS84_NAMES), name) != std::end(CRS84_NAMES);
}

std::unique_ptr<CrsConfig> startWithoutEntries(const CommonOptions& options) {
    try {
        std::unique_ptr<CrsConfig> config(CrsConfig::createDefaultConfigOrFromEnvVar());
        config->setConfigProperty(PROJ_DIRECTORY_PROPERTY, projDirectory(options.projDir));
        for (const std::string& property : options.properties) {
            const std::size_t end = property.find('=');
            config->setConfigProperty(property.substr(0, end), property.substr(end + 1));
        }
        config->init();
        return config;
    } catch (const std::exception& failure) {
        throw SetUpError(failure.what());
    }
}

// The library starts without entries first, so that the message of a bad PROJ directory does not name the
// configuration.
Session::Session(const CommonOptions& options)
    : crsConfig(startWithoutEntries(options)), configured(!options.configFile.empty()) {
    if (configured) startWith(readTextFile(options.configFile), options.configFile, *crsConfig);
}

Crs Session::createFromName(const std::string& name, bool throwIfMissing) const {
    if (configured || !isCrs84(name)) return creator().createFromName(name, throwIfMissing, configured);
    Crs crs = creator().createFromName(writeEpsgName({EPSG_WGS84_2D, 0}), throwIfMissing, false);
    if (crs == nullptr) return crs;
    crs.mod()->setAlias(name);
    crs.mod()->setAxisOrderEastNorthOrLonLat(true);
    return crs;
}

}  // namespace crsctl
