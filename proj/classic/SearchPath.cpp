#include "proj/classic/SearchPath.h"

#include <system_error>
#include <utility>

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

void setSearchDirectories(std::vector<std::string> directories) { searchDirectories() = std::move(directories); }

std::filesystem::path findInSearchDirectories(const std::string& name) {
    for (const std::string& directory : searchDirectories()) {
        std::error_code error;
        std::filesystem::path candidate = std::filesystem::path(directory) / name;
        if (std::filesystem::is_regular_file(candidate, error)) return candidate;
    }
    return {};
}

PJ_CONTEXT* makeContext() {
    PJ_CONTEXT* const context = proj_context_create();
    proj_log_level(context, PJ_LOG_NONE);
    proj_log_func(context, nullptr, dropMessage);
    proj_context_set_enable_network(context, 0);
    proj_context_set_file_finder(context, findForProj, new std::string);
    // A new context begins as a copy of the default one, which belongs to the application.
    proj_context_set_search_paths(context, 0, nullptr);
    return context;
}

}  // namespace ClassicProj
