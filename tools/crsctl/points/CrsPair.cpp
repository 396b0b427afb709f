#include "tools/crsctl/points/CrsPair.h"

#include <exception>

#include "CoordinateTransformation/CrsCreator.h"
#include "tools/common/FixedDecimals.h"
#include "tools/crsctl/names/NameReport.h"
#include "tools/crsctl/names/NameReportOutput.h"
#include "tools/crsctl/names/RegisteredNames.h"
#include "tools/crsctl/start/Failures.h"
#include "tools/crsctl/start/Session.h"

namespace crsctl {

using Tools::MAX_DECIMALS;

using CoordinateTransformation::AbstractCrs;
using CoordinateTransformation::Crs;
using CoordinateTransformation::CrsConfigData;

namespace {

Crs crsNamed(const std::string& name, const Session& session) {
    try {
        return session.createFromName(name, true);
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

constexpr int METRES = CrsConfigData::DEFAULT_NUMBER_OF_PLACES_METER;
constexpr int DEGREES = CrsConfigData::DEFAULT_NUMBER_OF_PLACES_DEGREE;

int horizontalDecimalsOf(const AbstractCrs& crs, const Session& session) {
    return configuredDecimals(crs, session).value_or(crs.isGeographic() ? DEGREES : METRES);
}

}  // namespace

CrsPair::CrsPair(const Session& session, const std::string& from, const std::string& to)
    : sourceCrs(crsNamed(from, session)),
      targetCrs(crsNamed(to, session)),
      horizontalDecimals(horizontalDecimalsOf(*targetCrs.get(), session)) {}

Decimals CrsPair::decimals(Shape shape) const {
    const bool hasHeightInMetres = shape == Shape::POINT && target().isGeographic();
    return {horizontalDecimals, horizontalDecimals, hasHeightInMetres ? METRES : horizontalDecimals,
            horizontalDecimals};
}

std::string CrsPair::refusalOf(const CoordinateLine& point) const {
    Ordinates moved = point.value;
    try {
        if (point.count > Z)
            source().transformTo(&target(), moved[X], moved[Y], moved[Z]);
        else
            source().transformTo(&target(), moved[X], moved[Y]);
    } catch (const std::exception& failure) {
        return failure.what();
    }
    return "the result is not finite";
}

}  // namespace crsctl
