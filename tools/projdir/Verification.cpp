#include "tools/projdir/Verification.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>
#include <map>
#include <memory>
#include <utility>

#include "CoordinateTransformation/CoordinateTransformation.h"
#include "text/InitFile.h"

namespace ProjDir {
namespace {

using CoordinateTransformation::AbstractCrs;
using CoordinateTransformation::CrsConfig;
using CoordinateTransformation::CrsCreator;

constexpr unsigned int UNKNOWN_CODE = 0;
constexpr unsigned int NO_SECOND_CODE = 0;
constexpr double NO_RESULT = std::numeric_limits<double>::infinity();

double toleranceFor(double inverse) { return EXACT + std::min(inverse, WORST_INVERSE); }

double orNoResult(double metres) {
    if (std::isnan(metres)) return NO_RESULT;
    return metres;
}

std::unique_ptr<CrsConfig> startLibrary(const std::string& directory) {
    std::unique_ptr<CrsConfig> config(CrsConfig::createConfigFromId("proj4"));
    config->setConfigProperty(CoordinateTransformation::PROJ_DIRECTORY_PROPERTY, directory);
    config->init();
    return config;
}

// The unknown CRS is WGS 84, longitude first, in every directory.
std::unique_ptr<AbstractCrs> createWgs84(const CrsCreator& creator) {
    std::unique_ptr<AbstractCrs> wgs84(creator.createFromCode(UNKNOWN_CODE, NO_SECOND_CODE, true));
    wgs84->setAxisOrderEastNorthOrLonLat(true);
    return wgs84;
}

// With the height: without it, the inverse from another ellipsoid does not lead back to the same point.
Coordinates transform(const AbstractCrs& source, const AbstractCrs& target, Coordinates coordinates) {
    auto& [x, y, z] = coordinates;
    source.transformTo(&target, x, y, z);
    return coordinates;
}

LonLat transformToWgs84(const AbstractCrs& crs, const AbstractCrs& wgs84, CrsKind kind, Coordinates coordinates) {
    auto& [x, y, z] = coordinates;
    if (kind == CrsKind::GEOCENTRIC)
        crs.transformTo(&wgs84, x, y, z);
    else
        crs.transformTo(&wgs84, x, y);
    return {x, y};
}

// A CRS of the finished directory, bound by the library, with the registry's own projection on the datum of the CRS.
// Coordinates are in the registry's axis order and units.
struct BoundCrs {
    // Raises the library's exception for a CRS that it does not bind.
    BoundCrs(ProjContext& context, const CrsCreator& creator, const CrsOutcome& crsOutcome)
        : outcome(crsOutcome),
          registrys(context, createCrs(context, outcome.crs.horizontalPart().code).get(),
                    ParameterList(outcome.definition->text).without({"towgs84", "nadgrids", "datum_id"}).toText(),
                    outcome.definition->isNorthFirst),
          crs(creator.createFromCode(outcome.crs.code, NO_SECOND_CODE, true)) {}

    // In metres. Not a number if the registry has no place for one of the two.
    double distanceBetween(const Coordinates& left, const Coordinates& right) const {
        if (outcome.crs.kind == CrsKind::GEOCENTRIC)
            return std::hypot(left[0] - right[0], left[1] - right[1], left[2] - right[2]);
        return distanceInMetres(registrys.toGeodetic(left), registrys.toGeodetic(right));
    }

    // The error of the registry's projection and its inverse; 0 where it has no result.
    double inverseErrorAt(const Coordinates& point) const {
        if (outcome.crs.kind == CrsKind::GEOCENTRIC) return 0;
        const double distance = distanceBetween(registrys.fromGeodetic(registrys.toGeodetic(point)), point);
        return std::isfinite(distance) ? distance : 0;
    }

    const CrsOutcome& outcome;
    RegistryProjection registrys;
    std::unique_ptr<AbstractCrs> crs;
};

// `distance` may raise the library's exceptions.
template <typename Distance>
Measurement measure(const Distance& distance) {
    try {
        return {orNoResult(distance()), ""};
    } catch (const std::exception& failure) {
        return {NO_RESULT, failure.what()};
    }
}

Measurement measureTrips(const BoundCrs& bound, const AbstractCrs& through) {
    return measure([&] {
        double largest = 0;
        for (const CheckPoint& point : bound.outcome.checkPoints) {
            const Coordinates there = transform(*bound.crs, through, point.crs);
            const Coordinates back = transform(through, *bound.crs, there);
            largest = std::max(largest, orNoResult(bound.distanceBetween(back, point.crs)));
        }
        return largest;
    });
}

// Measures CRS by CRS, in code order.
class Verifier {
public:
    Verifier(const CrsCreator& crsCreator, const std::vector<CrsOutcome>& all)
        : creator(crsCreator), wgs84(createWgs84(creator)) {
        for (const CrsOutcome& outcome : all) outcomes.emplace(outcome.crs.code, &outcome);
    }

    void addAgreement(const CrsOutcome& outcome) {
        Agreement agreement;
        agreement.outcome = &outcome;
        try {
            compare(agreement);
        } catch (const std::exception& failure) {
            agreement.failure = failure.what();
            agreement.largest = agreement.largestAnywhere = NO_RESULT;
        }
        made.agreements.push_back(agreement);
    }

    void addConversions(const CrsOutcome& outcome) {
        try {
            const auto crs = std::make_shared<BoundCrs>(context, creator, outcome);
            const std::shared_ptr<BoundCrs> base = baseOf(outcome);
            addRoundTrip(*crs, base.get());
            if (base == nullptr) return;
            addConversion(*crs, *base);
            std::shared_ptr<BoundCrs>& neighbour = neighbours[base->outcome.crs.code];
            if (neighbour != nullptr) addConversion(*crs, *neighbour);
            neighbour = crs;
        } catch (const std::exception& failure) {
            made.roundTrips.push_back({&outcome, std::nullopt, {NO_RESULT, failure.what()}, 0});
        }
    }

    Verification take() { return std::move(made); }

private:
    void compare(Agreement& agreement) const {
        const RegistryCrs& entry = agreement.outcome->crs;
        const std::unique_ptr<AbstractCrs> crs(creator.createFromCode(entry.code, NO_SECOND_CODE, true));
        const std::vector<CheckPoint>& points = agreement.outcome->checkPoints;
        const bool anyKnown = std::any_of(points.begin(), points.end(), [](const CheckPoint& p) { return p.isKnown; });
        for (const CheckPoint& point : points) {
            const LonLat moved = transformToWgs84(*crs, *wgs84, entry.kind, point.crs);
            const double distance = orNoResult(distanceInMetres(moved, point.wgs84));
            agreement.largestAnywhere = std::max(agreement.largestAnywhere, distance);
            if (point.isKnown || !anyKnown) agreement.largest = std::max(agreement.largest, distance);
        }
    }

    std::shared_ptr<BoundCrs> baseOf(const CrsOutcome& outcome) {
        if (outcome.crs.kind != CrsKind::PROJECTED) return nullptr;
        const auto found = outcomes.find(outcome.crs.geodeticCode);
        if (found == outcomes.end() || !found->second->definition) return nullptr;
        std::shared_ptr<BoundCrs>& base = bases[found->first];
        if (base == nullptr) base = std::make_shared<BoundCrs>(context, creator, *found->second);
        return base;
    }

    void addConversion(const BoundCrs& source, const BoundCrs& target) {
        const LonLat centre = centreOf(*source.outcome.crs.area);
        const Coordinates start = source.registrys.fromGeodetic(centre);
        const Coordinates expected = target.registrys.fromGeodetic(centre);
        const auto hasResult = [](const Coordinates& point) { return isFinite(LonLat{point[0], point[1]}); };
        if (!hasResult(start) || !hasResult(expected)) return;
        const Measurement measured =
            measure([&] { return target.distanceBetween(transform(*source.crs, *target.crs, start), expected); });
        const double inverse = distanceInMetres(source.registrys.toGeodetic(start), centre);
        made.conversions.push_back({&source.outcome, &target.outcome, measured, inverse});
    }

    void addRoundTrip(const BoundCrs& crs, const BoundCrs* base) {
        RoundTrip trip{&crs.outcome, std::nullopt, measureTrips(crs, *wgs84)};
        for (const CheckPoint& point : crs.outcome.checkPoints)
            trip.inverse = std::max(trip.inverse, crs.inverseErrorAt(point.crs));
        if (base != nullptr) trip.throughBase = measureTrips(crs, *base->crs);
        made.roundTrips.push_back(std::move(trip));
    }

    const CrsCreator& creator;
    const std::unique_ptr<AbstractCrs> wgs84;
    ProjContext context;
    std::map<unsigned int, const CrsOutcome*> outcomes;
    std::map<unsigned int, std::shared_ptr<BoundCrs>> bases;
    // The last projected CRS on each base.
    std::map<unsigned int, std::shared_ptr<BoundCrs>> neighbours;
    Verification made;
};

}  // namespace

bool isAccepted(const Conversion& conversion) {
    return conversion.measured.distance <= toleranceFor(conversion.inverse);
}

bool isAccepted(const RoundTrip& trip) {
    const Vector rotation = RADIANS_PER_ARC_SECOND * trip.outcome->definition->shift.helmert.rotation;
    const double tolerance = toleranceFor(trip.inverse);
    return (!trip.throughBase || trip.throughBase->distance <= tolerance) &&
           trip.throughWgs84.distance <= tolerance + rotation.squaredNorm() * WGS_84_ELLIPSOID.semiMajor;
}

bool isAccepted(const Verification& verification) {
    const auto areAccepted = [](const auto& list) {
        return std::all_of(list.begin(), list.end(), [](const auto& one) { return isAccepted(one); });
    };
    const auto& [agreements, conversions, roundTrips] = verification;
    return std::all_of(agreements.begin(), agreements.end(), [](const auto& one) { return one.failure.empty(); }) &&
           areAccepted(conversions) && areAccepted(roundTrips);
}

Verification verifyDirectory(const std::string& directory, const std::vector<CrsOutcome>& outcomes,
                             const std::function<void()>& advance) {
    const std::unique_ptr<CrsConfig> config = startLibrary(directory);
    Verifier verifier(config->getCreator(), outcomes);
    for (const auto add : {&Verifier::addAgreement, &Verifier::addConversions})
        for (const CrsOutcome& outcome : outcomes) {
            if (outcome.definition) (verifier.*add)(outcome);
            advance();
        }
    return verifier.take();
}

}  // namespace ProjDir
