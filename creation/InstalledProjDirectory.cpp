#include "CoordinateTransformation/InstalledProjDirectory.h"

#include <system_error>

#if defined(__unix__) || defined(__APPLE__)
#include <dlfcn.h>
#endif

#include "creation/ProjDirectoryPlaces.h"
#include "platform/ErrnoGuard.h"

#if !defined(COORDTRANS_INSTALLED_PROJ_DIR)
#define COORDTRANS_INSTALLED_PROJ_DIR ""
#define COORDTRANS_RELATIVE_PROJ_DIR ""
#endif

namespace CoordinateTransformation {
namespace {

// The file that contains this function. For a program dladdr gives a name that may depend on the working directory.
std::filesystem::path ownFile() {
#if defined(COORDTRANS_STATIC)
    return "/proc/self/exe";
#elif defined(__unix__) || defined(__APPLE__)
    Dl_info file;
    return dladdr(reinterpret_cast<const void*>(&installedProjDirectory), &file) == 0 ? "" : file.dli_fname;
#else
    return {};
#endif
}

}  // namespace

std::string chooseProjDirectory(const std::filesystem::path& file, const ProjDirectoryPlaces& places) {
    if (!file.is_absolute() || places.relative.empty()) return places.absolute;
    std::error_code failure;
    // The file may be a link from another folder.
    const std::filesystem::path target = std::filesystem::canonical(file, failure);
    const std::filesystem::path beside = (target.parent_path() / places.relative).lexically_normal();
    return !failure && std::filesystem::is_directory(beside, failure) ? beside.string() : places.absolute;
}

std::string installedProjDirectory() {
    const ErrnoGuard errnoGuard;
    return chooseProjDirectory(ownFile(), {COORDTRANS_RELATIVE_PROJ_DIR, COORDTRANS_INSTALLED_PROJ_DIR});
}

}  // namespace CoordinateTransformation
