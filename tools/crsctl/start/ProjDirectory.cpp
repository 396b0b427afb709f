#include "tools/crsctl/start/ProjDirectory.h"

#include <cstdlib>
#include <filesystem>

#include "text/InitFile.h"

namespace crsctl {

using CoordinateTransformation::BUILT_IN_PROJ_DIRECTORY;
using CoordinateTransformation::PROJ_DIRECTORY_VARIABLE;

namespace {

bool isDirectory(const char* path) {
    std::error_code ignored;
    return std::filesystem::is_directory(path, ignored);
}

// Beside the program, so that an installation can be moved; a program that is not installed has none there.
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

}  // namespace crsctl
