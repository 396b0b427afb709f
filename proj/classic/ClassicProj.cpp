#include "proj/classic/ClassicProj.h"

#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "proj/classic/Definition.h"
#include "proj/classic/InitFile.h"
#include "proj/classic/PairOperations.h"
#include "proj/classic/SearchPath.h"

namespace ClassicProj {

namespace {

// What making definitions needs, in one place. Never released: definitions live as long as the process.
struct DefinitionMaker {
    std::mutex lock;
    PJ_CONTEXT* proj = makeContext();
    std::map<std::string, InitFile> initFiles;
    // A deque keeps its elements in place.
    std::deque<Definition> made;
    // A map keeps them in place as well.
    std::map<int, std::string> errorTexts;
};

DefinitionMaker& definitionMaker() {
    static auto& maker = *new DefinitionMaker;
    return maker;
}

PairOperations& pairOperations() {
    static auto& operations = *new PairOperations(makeContext(), PairOperations::DEFAULT_BOUND);
    return operations;
}

// Serves calls without a context.
Context defaultContext;

std::optional<std::string> findInInitFile(const std::string& file, const std::string& code) {
    auto& initFiles = definitionMaker().initFiles;
    auto found = initFiles.find(file);
    if (found == initFiles.end()) {
        const std::filesystem::path path = findInSearchDirectories(file);
        if (path.empty()) return std::nullopt;
        found = initFiles.emplace(file, InitFile(path)).first;
    }
    return found->second.find(code);
}

// Adds the parameters that "+init=file:code" stands for behind those that are there. An ellipsoid of the init
// file does not count when the definition itself has any figure of the earth.
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

int expandAndMake(ParameterList parameters, Definition& definition) {
    const int error = expandInit(parameters);
    return error != 0 ? error : makeDefinition(parameters, definitionMaker().proj, definition);
}

// The init file of a definition that cannot be made may have a better one by now.
bool readInitFileAgain(const ParameterList& parameters) {
    const std::string init = parameters.get("init");
    const auto found = definitionMaker().initFiles.find(init.substr(0, init.find(':')));
    return found != definitionMaker().initFiles.end() && found->second.readIfChanged();
}

projPJ addDefinition(const char* text, Context& context) {
    DefinitionMaker& maker = definitionMaker();
    const ParameterList parameters{std::string(text)};
    Definition definition;
    context.error = expandAndMake(parameters, definition);
    if (context.error != 0 && readInitFileAgain(parameters)) {
        definition = Definition();
        context.error = expandAndMake(parameters, definition);
    }
    if (context.error != 0) return nullptr;
    definition.context = &context;
    maker.made.push_back(definition);
    return &maker.made.back();
}

// A geocentric CRS has no point without its z.
bool lacksHeight(const Definition& source, const Definition& target, const double* z) {
    return z == nullptr && (source.isGeocentric || target.isGeocentric);
}

}  // namespace

projCtx pj_ctx_alloc() { return new Context; }

void pj_ctx_free(projCtx context) { delete context; }

projPJ pj_init_plus_ctx(projCtx context, const char* definition) {
    const std::lock_guard<std::mutex> guard(definitionMaker().lock);
    return addDefinition(definition, context == nullptr ? defaultContext : *context);
}

int pj_is_latlong(projPJ definition) { return definition == nullptr || definition->isLongLat ? 1 : 0; }

int pj_transform(projPJ source, projPJ target, long count, int offset, double* x, double* y, double* z) {
    if (source == nullptr || target == nullptr) return PROJ_ERR_OTHER_API_MISUSE;
    if (lacksHeight(*source, *target, z)) return PROJ_ERR_COORD_TRANSFM_INVALID_COORD;
    int error = 0;
    const PairOperation* const operation = pairOperations().find(*source, *target, z != nullptr, error);
    for (long i = 0; error == 0 && i < count; ++i) {
        const long at = i * offset;
        error = operation->transform(x[at], y[at], z == nullptr ? nullptr : z + at);
    }
    return error;
}

// PROJ keeps only the last text that a context was asked for.
const char* pj_strerrno(int error) {
    if (error == 0) return nullptr;
    DefinitionMaker& maker = definitionMaker();
    const std::lock_guard<std::mutex> guard(maker.lock);
    const auto known = maker.errorTexts.find(error);
    if (known != maker.errorTexts.end()) return known->second.c_str();
    return maker.errorTexts.emplace(error, proj_context_errno_string(maker.proj, error)).first->second.c_str();
}

int* pj_get_errno_ref() { return &defaultContext.error; }

void pj_set_searchpath(int count, const char** paths) {
    const std::lock_guard<std::mutex> guard(definitionMaker().lock);
    setSearchDirectories(std::vector<std::string>(paths, paths + count));
    definitionMaker().initFiles.clear();
    defaultContext.error = 0;
}

}  // namespace ClassicProj
