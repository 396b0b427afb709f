#include "tools/projdir/ProjHandles.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <initializer_list>
#include <new>
#include <utility>

namespace ProjDir {

namespace {

bool isOneOf(const std::string& word, std::initializer_list<const char*> words) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

// PROJ names the function in front of its message. Steps of an operation ("hgridshift: could not find required
// grid(s).") fail over grids, which need not be installed; a text that cannot be written or read is the CRS's own.
bool isAboutDatabase(const std::string& message) {
    if (message.find("SQLite") != std::string::npos) return true;
    const std::string function = message.substr(0, message.find(':'));
    if (function.rfind("proj_", 0) != 0 || isOneOf(function, {"proj_as_proj_string", "proj_create"})) return false;
    // No operation leads from one of them to another.
    return message.find("celestial body") == std::string::npos;
}

}  // namespace

ProjContext::ProjContext() : context(proj_context_create()) {
    if (context == nullptr) throw std::bad_alloc();
    proj_log_level(get(), PJ_LOG_ERROR);
    proj_log_func(get(), this, keepMessage);
    proj_context_set_enable_network(get(), 0);
}

// PROJ is not prepared for exceptions out of here.
void ProjContext::keepMessage(void* self, int /*level*/, const char* text) {
    auto& kept = *static_cast<ProjContext*>(self);
    try {
        kept.message = textOrEmpty(text);
        if (kept.failure.empty() && isAboutDatabase(kept.message)) kept.failure = kept.message;
    } catch (const std::bad_alloc&) {
    }
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
