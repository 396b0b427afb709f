#include "tools/projdir/Verification.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>
#include <memory>

#include "CoordinateTransformation/CoordinateTransformation.h"
#include "text/InitFile.h"
#include "tools/projdir/Geodesy.h"

namespace ProjDir {
namespace {

using CoordinateTransformation::AbstractCrs;
using CoordinateTransformation::CrsConfig;
using CoordinateTransformation::CrsCreator;

constexpr unsigned int UNKNOWN_CODE = 0;

std::unique_ptr<CrsConfig> startLibrary(const std::string& directory) {
    std::unique_ptr<CrsConfig> config(CrsConfig::createConfigFromId("proj4"));
    config->setConfigProperty(CoordinateTransformation::PROJ_DIRECTORY_PROPERTY, directory);
    config->init();
    return config;
}

// Its definition is that of WGS 84, longitude first, whatever codes a directory has.
std::unique_ptr<AbstractCrs> createWgs84(const CrsCreator& creator) {
    std::unique_ptr<AbstractCrs> wgs84(creator.createFromCode(UNKNOWN_CODE, 0, true));
    wgs84->setAxisOrderEastNorthOrLonLat(true);
    return wgs84;
}

LonLat moveToWgs84(const AbstractCrs& crs, const AbstractCrs& wgs84, CrsKind kind, Coordinates coordinates) {
    auto& [x, y, z] = coordinates;
    if (kind == CrsKind::GEOCENTRIC)
        crs.transformTo(&wgs84, x, y, z);
    else
        crs.transformTo(&wgs84, x, y);
    return {x, y};
}

// A distance that is not a number counts as infinite.
void updateLargest(double& largest, double distance) {
    largest = std::isnan(distance) ? std::numeric_limits<double>::infinity() : std::max(largest, distance);
}

void compare(const AbstractCrs& crs, const AbstractCrs& wgs84, Agreement& agreement) {
    const std::vector<CheckPoint>& points = agreement.outcome->checkPoints;
    const bool anyKnown = std::any_of(points.begin(), points.end(), [](const CheckPoint& p) { return p.isKnown; });
    for (const CheckPoint& point : points) {
        const LonLat moved = moveToWgs84(crs, wgs84, agreement.outcome->crs.kind, point.crs);
        const double distance = distanceInMetres(moved, point.wgs84);
        updateLargest(agreement.largestAnywhere, distance);
        if (point.isKnown || !anyKnown) updateLargest(agreement.largest, distance);
    }
}

Agreement verifyOne(const CrsCreator& creator, const AbstractCrs& wgs84, const CrsOutcome& outcome) {
    Agreement agreement;
    agreement.outcome = &outcome;
    try {
        const std::unique_ptr<AbstractCrs> crs(creator.createFromCode(outcome.crs.code, 0, true));
        compare(*crs, wgs84, agreement);
    } catch (const std::exception& failure) {
        agreement.failure = failure.what();
        agreement.largest = agreement.largestAnywhere = std::numeric_limits<double>::infinity();
    }
    return agreement;
}

}  // namespace

Verification verifyDirectory(const std::string& directory, const std::vector<CrsOutcome>& outcomes,
                             Tools::ProgressBar& progress) {
    const std::unique_ptr<CrsConfig> config = startLibrary(directory);
    const CrsCreator& creator = config->getCreator();
    const std::unique_ptr<AbstractCrs> wgs84 = createWgs84(creator);
    Verification verification;
    for (const CrsOutcome& outcome : outcomes) {
        if (outcome.definition) verification.agreements.push_back(verifyOne(creator, *wgs84, outcome));
        progress.advance();
    }
    verification.withinDatums = measureWithinDatums(creator, *wgs84, outcomes, progress);
    return verification;
}

bool isAccepted(const Verification& verification) {
    const auto& [agreements, measured] = verification;
    return std::all_of(agreements.begin(), agreements.end(), [](const auto& one) { return one.failure.empty(); }) &&
           std::all_of(measured.conversions.begin(), measured.conversions.end(),
                       [](const Conversion& one) { return isAccepted(one); }) &&
           std::all_of(measured.roundTrips.begin(), measured.roundTrips.end(),
                       [](const RoundTrip& one) { return isAccepted(one); });
}

Distribution countByClass(const std::vector<double>& distances) {
    Distribution counts{};
    for (const double distance : distances)
        ++counts[static_cast<std::size_t>(
            std::lower_bound(AGREEMENT_CLASSES.begin(), AGREEMENT_CLASSES.end(), distance) -
            AGREEMENT_CLASSES.begin())];
    return counts;
}

}  // namespace ProjDir
