#include "CoordinateTransformation/Proj4CrsCreator.h"

#include <cstdlib>
#include <utility>

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>

#include "CoordinateTransformation/CrsConfig.h"  // Mutual: the creator asks the configuration that owns it.
#include "CoordinateTransformation/Misconfigured.h"
#include "CoordinateTransformation/Proj4Crs.h"
#include "QSHelpers/FileNotFoundException.h"
#include "names/CrsName.h"
#include "platform/ErrnoGuard.h"
#include "proj/AxisOrderTable.h"
#include "proj/Proj4Transformer.h"
#include "proj/SettledCrsDescriptions.h"
#include "proj/classic/ClassicProj.h"
#include "text/FileText.h"
#include "text/InitFile.h"

namespace CoordinateTransformation {
namespace {

constexpr unsigned int UNKNOWN_OR_DEFAULT_CODE = 0;
constexpr unsigned int DEFAULT_SECONDARY_CODE = 1;

std::string chooseDirectory(const std::string& property) {
    std::string directory = property;
    if (directory.empty()) {
        const char* const variable = std::getenv(PROJ_DIRECTORY_VARIABLE);
        if (variable != nullptr) directory = variable;
    }
    if (directory.empty()) directory = BUILT_IN_PROJ_DIRECTORY;
    // Never thrown while the built-in directory is not empty.
    if (directory.empty()) throw Misconfigured("Required Property Proj4ConfigDir not set");
    return directory;
}

void requireDirectory(const std::string& directory) {
    if (!boost::filesystem::is_directory(directory))
        throw Misconfigured("Configured Proj4 directory \"" + directory + "\" not found!");
}

// A later failure to bind a code reports only the code; here the file and the reason are known.
void requireReadable(const std::string& path) {
    const FileText file = readFile(path);
    if (!file.failure.empty()) throw Misconfigured("Unable to read init file \"" + path + "\": " + file.failure);
}

// Loads the axis orders and returns the descriptions, which take effect together with the directory.
CrsDescriptions loadFiles(const boost::filesystem::path& directory) {
    try {
        const std::string initFile = (directory / INIT_FILE).string();
        requireRegularFile(initFile);
        requireReadable(initFile);
        const std::string axisOrderFile = (directory / AXIS_ORDER_FILE).string();
        requireRegularFile(axisOrderFile);
        loadAxisOrderTable(axisOrderFile);
        return readCrsDescriptionsIfThere((directory / DESCRIPTION_FILE).string());
    } catch (const QSHelpers::FileNotFoundException& missing) {
        throw Misconfigured(missing.what());
    }
}

void setSearchPath(const std::string& directory) {
    const char* directories[] = {directory.c_str()};
    ClassicProj::pj_set_searchpath(1, directories);
    // Intended: joined without a separator; the text is part of the interface.
    if (const int error = *ClassicProj::pj_get_errno_ref(); error != 0)
        throw Misconfigured("Proj4 reported an error using configuration directory " + directory +
                            ClassicProj::pj_strerrno(error));
}

}  // namespace

Proj4CrsCreator::Proj4CrsCreator(const CrsConfig& crsConfig) : transformer(getProj4Transformer()), config(&crsConfig) {}

Proj4CrsCreator::~Proj4CrsCreator() = default;

const AbstractCrs* Proj4CrsCreator::getFromNameCache(const std::string& name, bool throwIfMissing) const {
    return config->getFromNameCache(name, throwIfMissing);
}

const AbstractCrs* Proj4CrsCreator::getFromCodeCache(const std::string& key, bool throwIfMissing) const {
    return config->getFromCodeCache(key, throwIfMissing);
}

AbstractCrs* Proj4CrsCreator::createFromCode(unsigned int primary, unsigned int secondary,
                                             bool standardAxisOrder) const {
    return new Proj4Crs(*this, *transformer, primary, secondary, standardAxisOrder);
}

AbstractCrs* Proj4CrsCreator::createDefault() const {
    return new Proj4Crs(*this, *transformer, UNKNOWN_OR_DEFAULT_CODE, DEFAULT_SECONDARY_CODE, false);
}

AbstractCrs* Proj4CrsCreator::createUnknown() const {
    return new Proj4Crs(*this, *transformer, UNKNOWN_OR_DEFAULT_CODE, 0, false);
}

void Proj4CrsCreator::init() {
    const std::string property = config->getConfigProperty(PROJ_DIRECTORY_PROPERTY);
    if (searchPathSet) return;
    const ErrnoGuard errnoGuard;
    const std::string directory = chooseDirectory(property);
    requireDirectory(directory);
    CrsDescriptions descriptions = loadFiles(directory);
    setSearchPath(directory);
    getSettledCrsDescriptions() = std::move(descriptions);
    searchPathSet = true;
}

bool Proj4CrsCreator::isCrsAllowed(const AbstractCrs* crs) const {
    return config->isCrsConfigured(crs->getPrimaryCode());
}

bool Proj4CrsCreator::isSyntaxAccepted(const std::string& property) const {
    return config->getConfigProperty(property) == "true";
}

bool Proj4CrsCreator::isEstablishedOrder() const {
    return config->getConfigProperty(AXIS_ORDER_PROPERTY) == ESTABLISHED_ORDER;
}

}  // namespace CoordinateTransformation
