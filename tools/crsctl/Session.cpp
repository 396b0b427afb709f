#include "tools/crsctl/Session.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <unistd.h>
#include <utility>

#include <boost/property_tree/xml_parser.hpp>

#include "config/Fragment.h"
#include "text/InitFile.h"

namespace crsctl {

using CoordinateTransformation::BUILT_IN_PROJ_DIRECTORY;
using CoordinateTransformation::Crs;
using CoordinateTransformation::CrsConfig;
using CoordinateTransformation::CrsCreator;
using CoordinateTransformation::PROJ_DIRECTORY_PROPERTY;
using CoordinateTransformation::PROJ_DIRECTORY_VARIABLE;

namespace {

[[noreturn]] void failFor(const std::string& path) { throw SetUpError(inputName(path) + ": " + std::strerror(errno)); }

std::string readDescriptor(int descriptor, const std::string& path) {
    std::string content;
    std::array<char, 65536> block{};
    for (;;) {
        const ssize_t count = read(descriptor, block.data(), block.size());
        if (count > 0) content.append(block.data(), static_cast<std::size_t>(count));
        if (count == 0 || content.size() > CoordinateTransformation::LARGEST_FRAGMENT) return content;
        if (count < 0 && errno != EINTR) failFor(path);
    }
}

class InputDescriptor {
public:
    explicit InputDescriptor(const std::string& path) : descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (descriptor < 0) failFor(path);
    }
    ~InputDescriptor() { close(descriptor); }
    InputDescriptor(const InputDescriptor&) = delete;
    InputDescriptor& operator=(const InputDescriptor&) = delete;

    const int descriptor;
};

}  // namespace

std::string inputName(const std::string& path) { return path == "-" ? STANDARD_INPUT : path; }

std::string readTextFile(const std::string& path) {
    if (path == "-") return readDescriptor(STDIN_FILENO, path);
    const InputDescriptor file(path);
    return readDescriptor(file.descriptor, path);
}

namespace {

bool isDirectory(const char* path) {
    std::error_code ignored;
    return std::filesystem::is_directory(path, ignored);
}

// Returns the directory beside the program if it exists, so that an installation can be moved; otherwise the one
// that was configured for the installation.
std::string installedDirectory() {
    std::error_code failure;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", failure);
    const std::filesystem::path besideProgram =
        (program.parent_path() / COORDTRANS_PROGRAM_TO_PROJ_DIR).lexically_normal();
    if (!failure && isDirectory(besideProgram.c_str())) return besideProgram.string();
    return COORDTRANS_INSTALLED_PROJ_DIR;
}

}  // namespace

std::string projDirectoryProperty(const ProjDirectoryChoice& choice) {
    if (!choice.option.empty()) return choice.option;
    if (!choice.environment.empty() || choice.builtInExists) return {};
    return choice.installed;
}

std::string projDirectory(const ProjDirectoryChoice& choice) {
    std::string property = projDirectoryProperty(choice);
    if (!property.empty()) return property;
    return choice.environment.empty() ? BUILT_IN_PROJ_DIRECTORY : choice.environment;
}

ProjDirectoryChoice projDirectoryChoice(const std::string& option) {
    const char* const environment = std::getenv(PROJ_DIRECTORY_VARIABLE);
    return {option, environment == nullptr ? "" : environment, isDirectory(BUILT_IN_PROJ_DIRECTORY),
            installedDirectory()};
}

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

// Returns the fragment with which a server would map these names.
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

// The library starts without entries first, so that the message of a bad PROJ directory does not name the
// configuration.
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
