#pragma once

#include <memory>
#include <proj.h>
#include <string>

namespace ProjDir {

struct Destroy {
    void operator()(PJ* object) const { proj_destroy(object); }
    void operator()(PJ_OBJ_LIST* list) const { proj_list_destroy(list); }
    void operator()(PJ_OPERATION_FACTORY_CONTEXT* factory) const { proj_operation_factory_context_destroy(factory); }
    void operator()(PROJ_CRS_INFO** list) const { proj_crs_info_list_destroy(list); }
    void operator()(char** list) const { proj_string_list_destroy(list); }
    void operator()(PROJ_CRS_LIST_PARAMETERS* parameters) const { proj_get_crs_list_parameters_destroy(parameters); }
    void operator()(PJ_CONTEXT* context) const { proj_context_destroy(context); }
};

using PjPtr = std::unique_ptr<PJ, Destroy>;
using PjListPtr = std::unique_ptr<PJ_OBJ_LIST, Destroy>;
using FactoryPtr = std::unique_ptr<PJ_OPERATION_FACTORY_CONTEXT, Destroy>;

// A PROJ context of its own: off the network, and keeping PROJ's messages instead of printing them. Owns the
// context, which outlives every object made with it. One thread at a time.
//
// std::bad_alloc when PROJ has no memory for one.
class ProjContext {
public:
    ProjContext();
    ProjContext(const ProjContext&) = delete;
    ProjContext& operator=(const ProjContext&) = delete;

    PJ_CONTEXT* get() const { return context.get(); }
    // Reads the database through a handle of its own. All contexts that spell its path alike share one, and wait for
    // one another.
    void openDatabaseAlone();
    // What PROJ said last, and forgets it.
    std::string takeMessage();
    // What PROJ said when it first failed over its database; empty while that is sound.
    const std::string& databaseFailure() const { return failure; }

private:
    static void keepMessage(void* self, int level, const char* text);

    std::string message;
    std::string failure;
    std::unique_ptr<PJ_CONTEXT, Destroy> context;
};

// PROJ's texts may be null.
inline std::string textOrEmpty(const char* text) { return text == nullptr ? std::string() : std::string(text); }

}  // namespace ProjDir
