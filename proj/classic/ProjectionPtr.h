#pragma once

#include <memory>
#include <proj.h>
#include <string>

namespace ClassicProj {

struct DestroyProjection {
    void operator()(PJ* projection) const { proj_destroy(projection); }
};

// Owns a PROJ object; released under the same terms as its context is used.
using ProjectionPtr = std::unique_ptr<PJ, DestroyProjection>;

// The PROJ object of the text, or null with the reason in the error number of the context. It is whole: when
// memory ends on the way, std::bad_alloc is thrown. PROJ loses count of its nesting then, and after a few times the
// context makes nothing more: give it up for making. What it has made may be used. Silences the context.
//
// REQUIRES: no other thread uses `context`.
ProjectionPtr makeProjection(PJ_CONTEXT* context, const std::string& text);

// The same for a grid shift, whose grids are open and complete afterwards but for those that may be missing and are.
ProjectionPtr makeGridShift(PJ_CONTEXT* context, const std::string& text);

}  // namespace ClassicProj
