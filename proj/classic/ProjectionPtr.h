#pragma once

#include <memory>
#include <proj.h>

namespace ClassicProj {

struct DestroyProjection {
    void operator()(PJ* projection) const { proj_destroy(projection); }
};

// Owns a PROJ object; released under the same terms as its context is used.
using ProjectionPtr = std::unique_ptr<PJ, DestroyProjection>;

}  // namespace ClassicProj
