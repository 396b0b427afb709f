#include "tools/crsctl/points/PointTransform.h"

#include <cmath>
#include <exception>

#include "CoordinateTransformation/CrsCreator.h"
#include "tools/crsctl/names/NameReport.h"
#include "tools/crsctl/names/NameReportOutput.h"
#include "tools/crsctl/names/RegisteredNames.h"
#include "tools/crsctl/points/FixedDecimals.h"
#include "tools/crsctl/start/Failures.h"
#include "tools/crsctl/start/Session.h"

namespace crsctl {

using CoordinateTransformation::AbstractCrs;
using CoordinateTransformation::Crs;
using CoordinateTransformation::CrsConfigData;

namespace {

Crs crsNamed(const std::string& name, const Session& session) {
    try {
        return session.creator().createFromName(name, true, session.isConfigured());
    } catch (const std::exception&) {
        throw InputRefused(refusalInOneLine(reportOn(name, session)));
    }
}

bool isEntryOf(const CrsConfigData& entry, const AbstractCrs& crs, const Session& session) {
    const Crs configured = session.creator().createFromName(entry.getIdentifier(), false, false);
    return configured.get() != nullptr && codeKeyOf(*configured.get()) == codeKeyOf(crs);
}

// How well an entry of the CRS fits the name that was asked for: under its alias, without any, under another.
int rankOf(const CrsConfigData& entry, const AbstractCrs& crs) {
    if (entry.getAlias() == crs.getAlias()) return 0;
    return entry.isMapped() ? 2 : 1;
}

bool isUsable(const boost::optional<int>& decimals) { return decimals && *decimals >= 0 && *decimals <= MAX_DECIMALS; }

// Of the entry that fits best, the first among equals. A number of places that cannot be written counts as none.
std::optional<int> configuredDecimals(const AbstractCrs& crs, const Session& session) {
    const CrsConfigData* best = nullptr;
    for (const CrsConfigData& entry : *session.config().getConfiguredCrs())
        if ((best == nullptr || rankOf(entry, crs) < rankOf(*best, crs)) && isEntryOf(entry, crs, session))
            best = &entry;
    if (best == nullptr || !isUsable(best->getNumberOfDecimalPlaces())) return std::nullopt;
    return *best->getNumberOfDecimalPlaces();
}

Decimals decimalsOf(const AbstractCrs& crs, const Session& session) {
    constexpr int METRES = CrsConfigData::DEFAULT_NUMBER_OF_PLACES_METER;
    constexpr int DEGREES = CrsConfigData::DEFAULT_NUMBER_OF_PLACES_DEGREE;
    const bool geographic = crs.isGeographic();
    const int horizontal = configuredDecimals(crs, session).value_or(geographic ? DEGREES : METRES);
    return {horizontal, horizontal, geographic ? METRES : horizontal};
}

bool areFinite(const std::array<double, ORDINATES>& ordinates) {
    return std::isfinite(ordinates[X]) && std::isfinite(ordinates[Y]) && std::isfinite(ordinates[Z]);
}

}  // namespace

PointTransform::PointTransform(const Session& session, const std::string& from, const std::string& to)
    : source(crsNamed(from, session)),
      target(crsNamed(to, session)),
      decimalsOfTarget(decimalsOf(*target.get(), session)) {}

bool PointTransform::run(std::array<double, ORDINATES>& ordinates, bool hasHeight, std::string& reason) const {
    if (!hasHeight) ordinates[Z] = 0;
    try {
        if (hasHeight)
            source.get()->transformTo(target.get(), ordinates[X], ordinates[Y], ordinates[Z]);
        else
            source.get()->transformTo(target.get(), ordinates[X], ordinates[Y]);
    } catch (const std::exception& failure) {
        reason = failure.what();
        return false;
    }
    if (areFinite(ordinates)) return true;
    reason = "the result is not finite";
    return false;
}

}  // namespace crsctl
