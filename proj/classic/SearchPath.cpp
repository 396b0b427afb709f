#include "proj/classic/SearchPath.h"

#include <algorithm>
#include <memory>
#include <new>
#include <system_error>
#include <utility>

#include "proj/classic/ProjFiles.h"

namespace ClassicProj {

namespace {

std::vector<std::string>& searchDirectories() {
    static auto& directories = *new std::vector<std::string>;
    return directories;
}

// Answers PROJ's question for a file; PROJ goes on with its own directories after null. `found` keeps the
// answer until PROJ has copied it.
const char* findForProj(PJ_CONTEXT* /*context*/, const char* name, void* found) {
    auto& path = *static_cast<std::string*>(found);
    path = findInSearchDirectories(name).string();
    return path.empty() ? nullptr : path.c_str();
}

void dropMessage(void* /*data*/, int /*level*/, const char* /*message*/) {}

}  // namespace

void setSearchDirectories(std::vector<std::string> directories) {
    for (std::string& directory : directories) {
        std::error_code error;
        const std::filesystem::path absolute = std::filesystem::absolute(directory, error);
        if (!error && !directory.empty()) directory = absolute.string();
    }
    searchDirectories() = std::move(directories);
}

std::filesystem::path findInSearchDirectories(const std::string& name) {
    for (const std::string& directory : searchDirectories()) {
        std::error_code error;
        std::filesystem::path candidate = std::filesystem::path(directory) / name;
        if (std::filesystem::is_regular_file(candidate, error)) return candidate;
    }
    return {};
}

bool isBelow(const std::filesystem::path& file, const std::filesystem::path& directory) {
    const std::filesystem::path whole = file.lexically_normal();
    const std::filesystem::path upper = directory.lexically_normal();
    const auto [in, of] = std::mismatch(whole.begin(), whole.end(), upper.begin(), upper.end());
    return in != whole.end() && (of == upper.end() || of->empty());
}

bool isInSearchDirectories(const std::filesystem::path& file) {
    const std::vector<std::string>& directories = searchDirectories();
    return std::any_of(directories.begin(), directories.end(),
                       [&file](const std::string& directory) { return isBelow(file, directory); });
}

// A new context begins as a copy of the default one, which belongs to the application. Where to look for files
// comes before all that makes PROJ read one.
PJ_CONTEXT* makeContext() {
    auto found = std::make_unique<std::string>();
    PJ_CONTEXT* const context = proj_context_create();
    if (context == nullptr) throw std::bad_alloc();
    proj_log_level(context, PJ_LOG_NONE);
    proj_log_func(context, nullptr, dropMessage);
    readFilesThroughLibrary(context);
    proj_context_set_file_finder(context, findForProj, found.release());
    proj_context_set_search_paths(context, 0, nullptr);
    proj_context_set_database_path(context, nullptr, nullptr, nullptr);
    proj_context_set_enable_network(context, 0);
    return context;
}

}  // namespace ClassicProj
