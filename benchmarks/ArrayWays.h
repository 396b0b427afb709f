#pragma once

// The ways to transform arrays of points that the benchmarks compare: this library, PROJ and GDAL.

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <proj.h>

#include "CoordinateTransformation/CoordinateTransformation.h"
#include "benchmarks/MeasuredPairs.h"
#include "proj/classic/ProjHandles.h"

#if defined(COORDTRANS_HAVE_GDAL)
#include <ogr_spatialref.h>
#endif

constexpr std::size_t POINTS = 1000;

struct Arrays {
    std::vector<double> x;
    std::vector<double> y;
};

// The form of the coordinates that a way takes and returns.
enum class Form { OF_THE_CRS, EAST_NORTH, EAST_NORTH_RADIANS };

// A pair of CRS, and points in the source CRS.
struct PairOfCrs {
    PairOfCrs(const CoordinateTransformation::CrsConfig& config, const MeasuredPair& measured)
        : pair(measured),
          source(config.getCreator().createFromName(pair.source, true, true)),
          target(config.getCreator().createFromName(pair.target, true, true)) {
        for (const Point& point : drawPoints(pair, POINTS)) {
            points.x.push_back(point.x);
            points.y.push_back(point.y);
        }
    }

    const CoordinateTransformation::AbstractCrs& from() const { return *source.get(); }
    const CoordinateTransformation::AbstractCrs& to() const { return *target.get(); }
    std::string name() const { return std::string(pair.source) + " > " + pair.target; }

    Arrays pointsIn(Form form) const {
        Arrays arrays = points;
        const double unit = form == Form::EAST_NORTH_RADIANS && from().isGeographic() ? RADIANS_PER_DEGREE : 1;
        for (double& x : arrays.x) x *= unit;
        for (double& y : arrays.y) y *= unit;
        if (form == Form::OF_THE_CRS && !from().isAxisOrderEastNorthOrLonLat()) arrays.x.swap(arrays.y);
        return arrays;
    }

    // Converts results from `form` to the units and the axis order of the target CRS.
    Arrays fromForm(Form form, Arrays arrays) const {
        constexpr double DEGREES_PER_RADIAN = 57.29577951308232;
        const double unit = form == Form::EAST_NORTH_RADIANS && to().isGeographic() ? DEGREES_PER_RADIAN : 1;
        for (double& x : arrays.x) x *= unit;
        for (double& y : arrays.y) y *= unit;
        if (form != Form::OF_THE_CRS && !to().isAxisOrderEastNorthOrLonLat()) arrays.x.swap(arrays.y);
        return arrays;
    }

    const MeasuredPair pair;

private:
    const CoordinateTransformation::Crs source;
    const CoordinateTransformation::Crs target;
    Arrays points;
};

// Transforms an array in place. Only the thread that creates it may use it.
using ArrayTransform = std::function<void(std::size_t count, double* x, double* y)>;

struct Way {
    const char* name;
    Form form;
    // The greatest allowed difference from AbstractCrs::transformTo in metres. 0 requires the same result.
    double tolerance;
    ArrayTransform (*make)(const PairOfCrs&);
};

inline ArrayTransform makePointTransformer(const PairOfCrs& pair) {
    const auto transformer = std::make_shared<CoordinateTransformation::PointTransformer>(pair.from(), pair.to());
    return [transformer](std::size_t count, double* x, double* y) { transformer->transform(count, x, y); };
}

// Creates a PointTransformer for every `SIZE` points, as a server does for each request.
template <std::size_t SIZE>
ArrayTransform makeRequests(const PairOfCrs& pair) {
    return [&pair](std::size_t count, double* x, double* y) {
        for (std::size_t done = 0; done < count; done += SIZE) {
            CoordinateTransformation::PointTransformer transformer(pair.from(), pair.to());
            transformer.transform(std::min(SIZE, count - done), x + done, y + done);
        }
    };
}

// Creates a PointTransformer for each point and transforms nothing.
inline ArrayTransform makeConstruction(const PairOfCrs& pair) {
    return [&pair](std::size_t count, double*, double*) {
        for (std::size_t i = 0; i < count; ++i) {
            CoordinateTransformation::PointTransformer transformer(pair.from(), pair.to());
            benchmark::DoNotOptimize(transformer);
        }
    };
}

inline ArrayTransform makeTransformTo(const PairOfCrs& pair) {
    return [from = &pair.from(), to = &pair.to()](std::size_t count, double* x, double* y) {
        for (std::size_t i = 0; i < count; ++i) from->transformTo(to, x[i], y[i]);
    };
}

// An operation of PROJ with a context of its own.
struct ReadyOperation {
    explicit ReadyOperation(const std::string& text)
        : context(proj_context_create()), operation(proj_create(context.get(), text.c_str())) {
        if (operation == nullptr) throw std::runtime_error("PROJ cannot create " + text);
    }

    void transform(PJ_DIRECTION direction, std::size_t count, double* x, double* y) const {
        constexpr std::size_t STEP = sizeof(double);
        proj_trans_generic(operation.get(), direction, x, STEP, count, y, STEP, count, nullptr, 0, 0, nullptr, 0, 0);
    }

    const ClassicProj::ProjPtr<PJ_CONTEXT> context;
    const ClassicProj::ProjPtr<PJ> operation;
};

inline ArrayTransform makeProjGeneric(const PairOfCrs& pair) {
    const auto ready = std::make_shared<const ReadyOperation>(pair.pair.operation);
    return [ready, direction = pair.pair.direction](std::size_t count, double* x, double* y) {
        ready->transform(direction, count, x, y);
    };
}

inline ArrayTransform makeProjTrans(const PairOfCrs& pair) {
    const auto ready = std::make_shared<const ReadyOperation>(pair.pair.operation);
    return [ready, direction = pair.pair.direction](std::size_t count, double* x, double* y) {
        for (std::size_t i = 0; i < count; ++i) {
            const PJ_COORD moved = proj_trans(ready->operation.get(), direction, proj_coord(x[i], y[i], 0, HUGE_VAL));
            x[i] = moved.xy.x;
            y[i] = moved.xy.y;
        }
    };
}

// Returns the operation with additional steps for the degrees and the axis orders of the CRS. The library converts
// these without PROJ.
inline std::string writeWholePipeline(const PairOfCrs& pair) {
    const std::string exchange = " +step +proj=axisswap +order=2,1";
    const std::string pipeline = "+proj=pipeline";
    const std::string operation = pair.pair.operation;
    std::string text = pipeline;
    if (!pair.from().isAxisOrderEastNorthOrLonLat()) text += exchange;
    if (pair.from().isGeographic()) text += " +step +proj=unitconvert +xy_in=deg +xy_out=rad";
    if (operation.compare(0, pipeline.size(), pipeline) == 0)
        text += operation.substr(pipeline.size());
    else
        text += (pair.pair.direction == PJ_INV ? " +step +inv " : " +step ") + operation;
    if (pair.to().isGeographic()) text += " +step +proj=unitconvert +xy_in=rad +xy_out=deg";
    if (!pair.to().isAxisOrderEastNorthOrLonLat()) text += exchange;
    return text;
}

inline ArrayTransform makeProjWhole(const PairOfCrs& pair) {
    const auto ready = std::make_shared<const ReadyOperation>(writeWholePipeline(pair));
    return [ready](std::size_t count, double* x, double* y) { ready->transform(PJ_FWD, count, x, y); };
}

#if defined(COORDTRANS_HAVE_GDAL)
inline ArrayTransform makeGdal(const PairOfCrs& pair) {
    OGRSpatialReference source;
    OGRSpatialReference target;
    source.importFromEPSG(std::stoi(pair.pair.source));
    target.importFromEPSG(std::stoi(pair.pair.target));
    source.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    target.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    const std::shared_ptr<OGRCoordinateTransformation> transformation(
        OGRCreateCoordinateTransformation(&source, &target));
    return [transformation](std::size_t count, double* x, double* y) {
        transformation->Transform(static_cast<int>(count), x, y);
    };
}
#endif

constexpr double DATUM_TOLERANCE = 10;

inline constexpr Way POINT_TRANSFORMER{"PointTransformer", Form::OF_THE_CRS, 0, makePointTransformer};
inline constexpr Way REQUEST{"PointTransformer made for each array", Form::OF_THE_CRS, 0, makeRequests<1000>};
inline constexpr Way TRANSFORM_TO{"transformTo", Form::OF_THE_CRS, 0, makeTransformTo};
inline constexpr Way PROJ_GENERIC{"proj_trans_generic", Form::EAST_NORTH_RADIANS, 0, makeProjGeneric};
inline constexpr Way PROJ_TRANS{"proj_trans", Form::EAST_NORTH_RADIANS, 0, makeProjTrans};
inline constexpr Way PROJ_WHOLE{"proj_trans_generic, degrees and axes", Form::OF_THE_CRS, 1e-4, makeProjWhole};
#if defined(COORDTRANS_HAVE_GDAL)
// GDAL chooses other datum shifts.
inline constexpr Way GDAL{"GDAL", Form::EAST_NORTH, DATUM_TOLERANCE, makeGdal};
#endif

// Throws if the results of a way differ from those of AbstractCrs::transformTo, because such a way is not comparable.
inline void requireAgreement(const PairOfCrs& pair, const Way& way) {
    Arrays expected = pair.pointsIn(Form::OF_THE_CRS);
    makeTransformTo(pair)(POINTS, expected.x.data(), expected.y.data());
    Arrays given = pair.pointsIn(way.form);
    way.make(pair)(POINTS, given.x.data(), given.y.data());
    given = pair.fromForm(way.form, given);
    constexpr double METRES_PER_DEGREE = 111320;
    const double tolerance = pair.to().isGeographic() ? way.tolerance / METRES_PER_DEGREE : way.tolerance;
    for (std::size_t i = 0; i < POINTS; ++i)
        if (!(std::abs(given.x[i] - expected.x[i]) <= tolerance) ||
            !(std::abs(given.y[i] - expected.y[i]) <= tolerance))
            throw std::runtime_error(pair.name() + ": " + way.name + " returns other points");
}
