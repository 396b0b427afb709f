#pragma once

#include <string>

#include <gtest/gtest.h>
#include <proj.h>

#include "CoordinateTransformation/PointTransformer.h"
#include "proj/classic/ProjHandles.h"

namespace TestSupport {

// Transforms boxes with PROJ, between longitude and latitude in degrees on WGS 84 and a projection.
class ProjBounds {
public:
    using Bounds = CoordinateTransformation::Bounds;

    explicit ProjBounds(const std::string& projection)
        : operation(proj_create_crs_to_crs(context.get(), "+proj=longlat +datum=WGS84 +type=crs",
                                           (projection + " +type=crs").c_str(), nullptr)) {}

    Bounds project(const Bounds& box, int pointsPerEdge) const { return transform(box, PJ_FWD, pointsPerEdge); }
    Bounds unproject(const Bounds& box, int pointsPerEdge) const { return transform(box, PJ_INV, pointsPerEdge); }

private:
    Bounds transform(const Bounds& box, PJ_DIRECTION direction, int pointsPerEdge) const {
        Bounds result{};
        EXPECT_EQ(proj_trans_bounds(context.get(), operation.get(), direction, box.minX, box.minY, box.maxX, box.maxY,
                                    &result.minX, &result.minY, &result.maxX, &result.maxY, pointsPerEdge),
                  1);
        return result;
    }

    ClassicProj::ProjPtr<PJ_CONTEXT> context{proj_context_create()};
    ClassicProj::ProjectionPtr operation;
};

}  // namespace TestSupport
