#pragma once

#include <memory>

#include <proj.h>

namespace ClassicProj {

// Releases the objects that PROJ has made.
struct ReleaseProjObject {
    void operator()(PJ_CONTEXT* context) const { proj_context_destroy(context); }
    void operator()(PJ* object) const { proj_destroy(object); }
    void operator()(PJ_OBJ_LIST* list) const { proj_list_destroy(list); }
    void operator()(PJ_OPERATION_FACTORY_CONTEXT* factory) const { proj_operation_factory_context_destroy(factory); }
    void operator()(PROJ_CRS_INFO** list) const { proj_crs_info_list_destroy(list); }
    void operator()(PROJ_CRS_LIST_PARAMETERS* parameters) const { proj_get_crs_list_parameters_destroy(parameters); }
    void operator()(char** list) const { proj_string_list_destroy(list); }
};

// Owns an object that PROJ has made. The object must be released before its context, under the same rules as the
// context is used.
template <typename Object>
using ProjPtr = std::unique_ptr<Object, ReleaseProjObject>;

// A projection, an operation or a CRS.
using ProjectionPtr = ProjPtr<PJ>;

}  // namespace ClassicProj
