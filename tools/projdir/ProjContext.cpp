#include "tools/projdir/ProjContext.h"

#include <atomic>
#include <cstddef>
#include <new>
#include <utility>

namespace ProjDir {
namespace {

bool has(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

// PROJ names the function in front of its message. What steps of an operation say ("hgridshift: could not find required
// grid(s).") is about grids, which need not be installed; and some operations of a sound database cannot be made.
bool isAboutDatabase(const std::string& message) {
    const std::string function = message.substr(0, message.find(':'));
    if (has(message, "SQLite") || has(function, "_database")) return true;
    return function.rfind("proj_", 0) == 0 && (has(message, "cannot build") || has(message, "not found"));
}

// A search path of one's own takes the place of all others. The database is named first: it would not be found there.
void hideFiles(PJ_CONTEXT* context) {
    const std::string database = textOrEmpty(proj_context_get_database_path(context));
    const char* const nowhere = "/nonexistent";
    proj_context_set_search_paths(context, 1, &nowhere);
    if (!database.empty()) proj_context_set_database_path(context, database.c_str(), nullptr, nullptr);
}

}  // namespace

ProjContext::ProjContext(GridUse grids) : context(proj_context_create()) {
    if (context == nullptr) throw std::bad_alloc();
    proj_log_level(get(), PJ_LOG_ERROR);
    proj_log_func(get(), this, keepMessage);
    proj_context_set_enable_network(get(), 0);
    if (grids == GridUse::NONE) hideFiles(get());
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

void ProjContext::openDatabaseUnshared() const {
    static std::atomic<std::size_t> contexts{0};
    const std::string path = textOrEmpty(proj_context_get_database_path(get()));
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return;
    const std::string otherSpelling = path.substr(0, slash) + std::string(2 + contexts++, '/') + path.substr(slash + 1);
    proj_context_set_database_path(get(), otherSpelling.c_str(), nullptr, nullptr);
}

std::string ProjContext::takeMessage() { return std::exchange(message, std::string()); }

}  // namespace ProjDir
