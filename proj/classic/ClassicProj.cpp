#include "proj/classic/ClassicProj.h"

#include <deque>
#include <map>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "proj/classic/Definition.h"
#include "proj/classic/OperationPool.h"
#include "proj/classic/PairOperations.h"
#include "proj/classic/PerProcess.h"
#include "proj/classic/ProjObjects.h"
#include "text/InitFile.h"

namespace ClassicProj {

using CoordinateTransformation::InitFile;

TransformRole transformRole;
unsigned int forksSinceLoad = 0;

namespace {

// The data for making definitions, and the lock that guards them. Never released: definitions live as long as the
// process.
struct Definitions {
    std::mutex lock;
    PerProcess<PJ_CONTEXT*> proj{makeContext};
    std::map<std::string, InitFile> initFiles;
    // A deque, so that elements keep their addresses.
    std::deque<Definition> made;
    // A map, so that texts keep their addresses.
    std::map<int, std::string> errorTexts;
};

Definitions& definitions() {
    static auto& all = *new Definitions;
    return all;
}

PairOperations makeOperations() { return PairOperations(makeContext, PairOperations::DEFAULT_BOUND); }

PairOperations& pairOperations() COORDTRANS_THREAD_SAFETY(requires_capability(transformRole)) {
    static auto& operations = *new PerProcess<PairOperations>(makeOperations);
    return operations.get();
}

// The context of calls without one.
Context defaultContext;

std::optional<std::string> findInInitFile(const std::string& file, const std::string& code) {
    auto& initFiles = definitions().initFiles;
    auto found = initFiles.find(file);
    if (found == initFiles.end()) {
        const std::filesystem::path path = findInSearchDirectories(file);
        if (path.empty()) return std::nullopt;
        found = initFiles.emplace(file, InitFile(path)).first;
    }
    return found->second.find(code);
}

// Appends the parameters that the init file has for "+init=file:code". An ellipsoid of the init file is ignored when
// the definition itself has a figure of the earth.
int expandInit(ParameterList& parameters) {
    if (!parameters.has("init")) return 0;
    const std::string init = parameters.get("init");
    const std::size_t colon = init.find(':');
    if (colon == std::string::npos) return PROJ_ERR_INVALID_OP_ILLEGAL_ARG_VALUE;
    const std::optional<std::string> text = findInInitFile(init.substr(0, colon), init.substr(colon + 1));
    if (!text) return PROJ_ERR_INVALID_OP_FILE_NOT_FOUND_OR_INVALID;
    ParameterList defaults(*text);
    if (parameters.hasAnyOf({"datum", "ellps", "a", "b", "rf", "f"})) defaults = defaults.without({"ellps"});
    parameters.addDefaults(defaults);
    return 0;
}

int makeOrChangeContext(const ParameterList& parameters, Definition& definition) {
    Definitions& all = definitions();
    const ProjWork work;
    if (!work.isAllowed()) return PROJ_ERR_OTHER;
    try {
        return makeDefinition(parameters, all.proj.get(), definition);
    } catch (const std::bad_alloc&) {
        all.proj.abandon();
        throw;
    }
}

int expandAndDefine(ParameterList parameters, Definition& definition) {
    const int error = expandInit(parameters);
    return error != 0 ? error : makeOrChangeContext(parameters, definition);
}

// After a failure, reads the init file again if it has changed: it may contain a better definition by now.
bool readInitFileAgain(const ParameterList& parameters) {
    const std::string init = parameters.get("init");
    const auto found = definitions().initFiles.find(init.substr(0, init.find(':')));
    return found != definitions().initFiles.end() && found->second.readIfChanged();
}

projPJ addDefinition(const char* text, Context& context) {
    const ParameterList parameters{std::string(text)};
    Definition definition;
    context.error = expandAndDefine(parameters, definition);
    if (context.error != 0 && readInitFileAgain(parameters)) {
        definition = Definition();
        context.error = expandAndDefine(parameters, definition);
    }
    if (context.error != 0) return nullptr;
    std::deque<Definition>& made = definitions().made;
    made.push_back(definition);
    return &made.back();
}

}  // namespace

projCtx pj_ctx_alloc() { return new Context; }

void pj_ctx_free(projCtx context) { delete context; }

projPJ pj_init_plus_ctx(projCtx context, const char* definition) {
    const std::lock_guard<std::mutex> guard(definitions().lock);
    return addDefinition(definition, context == nullptr ? defaultContext : *context);
}

int pj_is_latlong(projPJ definition) { return definition == nullptr || definition->isLongLat ? 1 : 0; }

int pj_transform(projPJ source, projPJ target, long count, int offset, double* x, double* y, double* z) {
    if (source == nullptr || target == nullptr) return PROJ_ERR_OTHER_API_MISUSE;
    PairOperations& operations = pairOperations();
    int error = 0;
    for (long i = 0; error == 0 && i < count; ++i) {
        const long at = i * offset;
        error = operations.transform(*source, *target, x[at], y[at], z == nullptr ? nullptr : z + at);
    }
    return error;
}

// Texts are kept here, because PROJ keeps only the last text of a context.
const char* pj_strerrno(int error) {
    if (error == 0) return nullptr;
    const std::lock_guard<std::mutex> guard(definitions().lock);
    Definitions& all = definitions();
    const auto known = all.errorTexts.find(error);
    if (known != all.errorTexts.end()) return known->second.c_str();
    return all.errorTexts.emplace(error, proj_context_errno_string(all.proj.get(), error)).first->second.c_str();
}

int* pj_get_errno_ref() { return &defaultContext.error; }

void pj_set_searchpath(int count, const char** paths) {
    const std::lock_guard<std::mutex> guard(definitions().lock);
    const bool all = setSearchDirectories(std::vector<std::string>(paths, paths + count));
    definitions().initFiles.clear();
    defaultContext.error = all ? 0 : PROJ_ERR_INVALID_OP_FILE_NOT_FOUND_OR_INVALID;
}

void lockForFork() {
    definitions().lock.lock();
    ProjWork::lockForFork();
    lockPoolForFork();
    projFilesLock.lock();
}

void unlockAfterFork() {
    projFilesLock.unlock();
    unlockPoolAfterFork();
    ProjWork::unlockAfterFork();
    definitions().lock.unlock();
}

void resetInChild() {
    ++forksSinceLoad;
    closeInheritedFiles();
}

}  // namespace ClassicProj
