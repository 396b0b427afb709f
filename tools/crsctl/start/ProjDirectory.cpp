#include "tools/crsctl/start/ProjDirectory.h"

#include <cstdlib>
#include <filesystem>

namespace crsctl {

namespace {

constexpr char DIRECTORY_VARIABLE[] = "QUARVELSRV_PROJ4_CONF_DIR";
constexpr char BUILT_IN_DIRECTORY[] = "/opt/quarvelserver/share/proj4";

bool isDirectory(const char* path) {
    std::error_code ignored;
    return std::filesystem::is_directory(path, ignored);
}

}  // namespace

std::string projDirectoryProperty(const ProjDirectoryChoice& choice) {
    if (!choice.option.empty()) return choice.option;
    if (!choice.environment.empty() || choice.builtInExists) return {};
    return choice.installed;
}

ProjDirectoryChoice projDirectoryChoice(const std::string& option) {
    const char* const environment = std::getenv(DIRECTORY_VARIABLE);
    return {option, environment == nullptr ? "" : environment, isDirectory(BUILT_IN_DIRECTORY),
            COORDTRANS_INSTALLED_PROJ_DIR};
}

}  // namespace crsctl
