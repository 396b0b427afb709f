#include "proj/classic/Datum.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string_view>

#include "proj/classic/Numbers.h"

namespace ClassicProj {

namespace {

// The named datums of the classic interface, with the shifts of PROJ 6 to 7 (proj.org, "Geodetic datums").
struct NamedDatum {
    const char* name;
    const char* parameters;
};

constexpr NamedDatum NAMED_DATUMS[] = {
    {"WGS84", "towgs84=0,0,0 ellps=WGS84"},
    {"GGRS87", "towgs84=-199.87,74.79,246.62 ellps=GRS80"},
    {"NAD83", "towgs84=0,0,0 ellps=GRS80"},
    {"NAD27", "nadgrids=@conus,@alaska,@ntv2_0.gsb,@ntv1_can.dat ellps=clrk66"},
    {"potsdam", "nadgrids=@BETA2007.gsb ellps=bessel"},
    {"carthage", "towgs84=-263.0,6.0,431.0 ellps=clrk80ign"},
    {"hermannskogel", "towgs84=577.326,90.129,463.919,5.137,1.474,5.297,2.4232 ellps=bessel"},
    {"ire65", "towgs84=482.530,-130.596,564.557,-1.042,-0.214,-0.631,8.15 ellps=mod_airy"},
    {"nzgd49", "towgs84=59.47,-5.04,187.44,0.47,-0.1,1.024,-4.5993 ellps=intl"},
    {"OSGB36", "towgs84=446.448,-125.157,542.060,0.1502,0.2470,0.8421,-20.4894 ellps=airy"},
};

// WGS 84 and GRS 80 count as one ellipsoid within this difference of the squared eccentricity.
constexpr double WGS_84_SEMI_MAJOR = 6378137.0;
constexpr double WGS_84_ECCENTRICITY_SQUARED = 0.006694379990;
constexpr double ECCENTRICITY_TOLERANCE = 0.000000000050;

std::array<double, 7> readToWgs84(std::string_view text) {
    std::array<double, 7> values{};
    for (double& value : values) {
        const std::size_t comma = text.find(',');
        value = readNumber(text.substr(0, comma));
        if (comma == std::string_view::npos) break;
        text.remove_prefix(comma + 1);
    }
    return values;
}

bool isWgs84OrGrs80(const Ellipsoid& ellipsoid) {
    return ellipsoid.semiMajor == WGS_84_SEMI_MAJOR &&
           std::fabs(ellipsoid.eccentricitySquared - WGS_84_ECCENTRICITY_SQUARED) < ECCENTRICITY_TOLERANCE;
}

DatumKind kindOfHelmert(const std::array<double, 7>& toWgs84, const Ellipsoid& ellipsoid) {
    const bool allZero = std::all_of(toWgs84.begin(), toWgs84.end(), [](double value) { return value == 0; });
    return allZero && isWgs84OrGrs80(ellipsoid) ? DatumKind::WGS_84 : DatumKind::HELMERT;
}

bool isSame(const Datum& left, const Datum& right) {
    return left.kind == right.kind && left.ellipsoid.semiMajor == right.ellipsoid.semiMajor &&
           std::fabs(left.ellipsoid.eccentricitySquared - right.ellipsoid.eccentricitySquared) <=
               ECCENTRICITY_TOLERANCE &&
           left.toWgs84 == right.toWgs84 && left.grids == right.grids;
}

}  // namespace

bool operator==(const Ellipsoid& left, const Ellipsoid& right) {
    return left.semiMajor == right.semiMajor && left.eccentricitySquared == right.eccentricitySquared;
}

bool expandDatum(ParameterList& parameters) {
    if (!parameters.has("datum")) return true;
    const std::string name = parameters.get("datum");
    for (const NamedDatum& datum : NAMED_DATUMS) {
        if (name != datum.name) continue;
        parameters.addDefaults(ParameterList(datum.parameters));
        return true;
    }
    return false;
}

Datum readDatum(const ParameterList& parameters, const Ellipsoid& ellipsoid, const Ellipsoid& wgs84) {
    Datum datum;
    datum.ellipsoid = ellipsoid;
    datum.meetingEllipsoid = ellipsoid;
    if (parameters.has("nadgrids")) {
        datum.kind = DatumKind::GRIDS;
        datum.grids = parameters.get("nadgrids");
        datum.meetingEllipsoid = wgs84;
    } else if (parameters.has("towgs84")) {
        datum.toWgs84 = readToWgs84(parameters.get("towgs84"));
        datum.kind = kindOfHelmert(datum.toWgs84, ellipsoid);
    }
    return datum;
}

bool isFinite(const Datum& datum) {
    return std::all_of(datum.toWgs84.begin(), datum.toWgs84.end(), [](double value) { return std::isfinite(value); });
}

bool needsNoShift(const Datum& source, const Datum& target) {
    return source.kind == DatumKind::UNKNOWN || target.kind == DatumKind::UNKNOWN || isSame(source, target);
}

}  // namespace ClassicProj
