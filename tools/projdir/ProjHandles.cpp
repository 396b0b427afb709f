#include "tools/projdir/ProjHandles.h"

#include <atomic>
#include <cstddef>
#include <utility>

namespace ProjDir {

namespace {

void keepMessage(void* kept, int /*level*/, const char* message) {
    *static_cast<std::string*>(kept) = textOrEmpty(message);
}

}  // namespace

ProjContext::ProjContext() : context(proj_context_create()) {
    proj_log_level(get(), PJ_LOG_ERROR);
    proj_log_func(get(), &message, keepMessage);
    proj_context_set_enable_network(get(), 0);
}

void ProjContext::openDatabaseAlone() {
    static std::atomic<std::size_t> contexts{0};
    const std::string path = textOrEmpty(proj_context_get_database_path(get()));
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return;
    const std::string otherSpelling = path.substr(0, slash) + std::string(2 + contexts++, '/') + path.substr(slash + 1);
    proj_context_set_database_path(get(), otherSpelling.c_str(), nullptr, nullptr);
}

std::string ProjContext::takeMessage() { return std::exchange(message, std::string()); }

}  // namespace ProjDir
