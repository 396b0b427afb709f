#include "tools/projdir/DatumConversions.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>
#include <map>
#include <memory>
#include <utility>

namespace ProjDir {
namespace {

using CoordinateTransformation::AbstractCrs;
using CoordinateTransformation::CrsCreator;

constexpr double EARTH_RADIUS = 6378137;
constexpr double NO_RESULT = std::numeric_limits<double>::infinity();

bool isFinite(const Coordinates& coordinates) { return std::isfinite(coordinates[0]) && std::isfinite(coordinates[1]); }

double toleranceFor(double inverse) { return EXACT + std::min(inverse, WORST_INVERSE); }

// How far PROJ's own way to the datum and back leads from the point; nothing where it has none.
double inverseErrorAt(const CrsUnderTest& crs, const Coordinates& point) {
    if (crs.outcome().crs.kind == CrsKind::GEOCENTRIC) return 0;
    const double distance = crs.distanceBetween(crs.coordinatesAt(crs.placeOf(point)), point);
    return std::isfinite(distance) ? distance : 0;
}

double orNoResult(double metres) {
    if (std::isnan(metres)) return NO_RESULT;
    return metres;
}

// `distance` may raise what the library raises.
template <typename Distance>
Measurement measure(const Distance& distance) {
    try {
        return {orNoResult(distance()), ""};
    } catch (const std::exception& failure) {
        return {NO_RESULT, failure.what()};
    }
}

LonLat centreOf(const Area& area) { return sampleArea(area, 3)[4]; }

// Moves points through the library, CRS by CRS in code order.
class DatumSurveyor {
public:
    DatumSurveyor(const CrsCreator& crsCreator, const AbstractCrs& commonWgs84, const std::vector<CrsOutcome>& all)
        : creator(crsCreator), wgs84(commonWgs84) {
        for (const CrsOutcome& outcome : all) outcomes.emplace(outcome.crs.code, &outcome);
    }

    void survey(const CrsOutcome& outcome) {
        try {
            const auto crs = std::make_shared<CrsUnderTest>(context, creator, outcome);
            const std::shared_ptr<CrsUnderTest> base = baseOf(outcome);
            addRoundTrip(*crs, base.get());
            if (base == nullptr) return;
            addConversion(*crs, *base);
            std::shared_ptr<CrsUnderTest>& neighbour = neighbours[base->outcome().crs.code];
            if (neighbour != nullptr) addConversion(*crs, *neighbour);
            neighbour = crs;
        } catch (const std::exception& failure) {
            made.roundTrips.push_back({&outcome, std::nullopt, {NO_RESULT, failure.what()}, 0});
        }
    }

    DatumMeasurements take() { return std::move(made); }

private:
    std::shared_ptr<CrsUnderTest> baseOf(const CrsOutcome& outcome) {
        if (outcome.crs.kind != CrsKind::PROJECTED) return nullptr;
        const auto found = outcomes.find(outcome.crs.geodeticCode);
        if (found == outcomes.end() || !found->second->definition) return nullptr;
        std::shared_ptr<CrsUnderTest>& base = bases[found->first];
        if (base == nullptr) base = std::make_shared<CrsUnderTest>(context, creator, *found->second);
        return base;
    }

    void addConversion(const CrsUnderTest& source, const CrsUnderTest& target) {
        const LonLat centre = centreOf(*source.outcome().crs.area);
        const Coordinates start = source.coordinatesAt(centre);
        const Coordinates expected = target.coordinatesAt(centre);
        if (!isFinite(start) || !isFinite(expected)) return;
        const Measurement measured =
            measure([&] { return target.distanceBetween(source.move(start, target.bound()), expected); });
        const double inverse = distanceInMetres(source.placeOf(start), centre);
        made.conversions.push_back({&source.outcome(), &target.outcome(), measured, inverse});
    }

    void addRoundTrip(const CrsUnderTest& crs, const CrsUnderTest* base) {
        RoundTrip trip{&crs.outcome(), std::nullopt, measureTrips(crs, wgs84)};
        for (const CheckPoint& point : crs.outcome().checkPoints)
            trip.inverse = std::max(trip.inverse, inverseErrorAt(crs, point.crs));
        if (base != nullptr) trip.throughBase = measureTrips(crs, base->bound());
        made.roundTrips.push_back(std::move(trip));
    }

    static Measurement measureTrips(const CrsUnderTest& crs, const AbstractCrs& through) {
        return measure([&] {
            double largest = 0;
            for (const CheckPoint& point : crs.outcome().checkPoints) {
                const double distance =
                    crs.distanceBetween(crs.moveFrom(through, crs.move(point.crs, through)), point.crs);
                largest = std::max(largest, orNoResult(distance));
            }
            return largest;
        });
    }

    const CrsCreator& creator;
    const AbstractCrs& wgs84;
    ProjContext context;
    std::map<unsigned int, const CrsOutcome*> outcomes;
    std::map<unsigned int, std::shared_ptr<CrsUnderTest>> bases;
    // By their base, the last one of each.
    std::map<unsigned int, std::shared_ptr<CrsUnderTest>> neighbours;
    DatumMeasurements made;
};

}  // namespace

bool isAccepted(const Conversion& conversion) {
    return conversion.measured.distance <= toleranceFor(conversion.inverse);
}

double toleranceThroughWgs84(const RoundTrip& trip) {
    const Vector rotation = RADIANS_PER_ARC_SECOND * trip.outcome->definition->shift.helmert.rotation;
    return toleranceFor(trip.inverse) + rotation.squaredNorm() * EARTH_RADIUS;
}

bool isAccepted(const RoundTrip& trip) {
    return (!trip.throughBase || trip.throughBase->distance <= toleranceFor(trip.inverse)) &&
           trip.throughWgs84.distance <= toleranceThroughWgs84(trip);
}

DatumMeasurements measureWithinDatums(const CrsCreator& creator, const AbstractCrs& wgs84,
                                      const std::vector<CrsOutcome>& outcomes, Tools::ProgressBar& progress) {
    DatumSurveyor surveyor(creator, wgs84, outcomes);
    for (const CrsOutcome& outcome : outcomes) {
        if (outcome.definition) surveyor.survey(outcome);
        progress.advance();
    }
    return surveyor.take();
}

}  // namespace ProjDir
