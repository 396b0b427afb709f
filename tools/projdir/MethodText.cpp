#include "tools/projdir/MethodText.h"

#include <cmath>

#include "text/NumericText.h"
#include "tools/projdir/EllipsoidText.h"

namespace ProjDir {

using CoordinateTransformation::writeDouble;

namespace {

// Codes of EPSG methods and of their parameters.
constexpr char LAMBERT_WEST_ORIENTATED[] = "9826";
constexpr char BONNE_SOUTH_ORIENTATED[] = "9828";
constexpr char POLAR_STEREOGRAPHIC_C[] = "9830";
constexpr char LATITUDE_OF_ORIGIN[] = "8801";
constexpr char LONGITUDE_OF_ORIGIN[] = "8802";
constexpr char SCALE_AT_ORIGIN[] = "8805";
constexpr char FALSE_EASTING[] = "8806";
constexpr char FALSE_NORTHING[] = "8807";
constexpr char EASTING_AT_FALSE_ORIGIN[] = "8826";
constexpr char NORTHING_AT_FALSE_ORIGIN[] = "8827";
constexpr char STANDARD_PARALLEL[] = "8832";
constexpr char LONGITUDE_OF_FALSE_ORIGIN[] = "8833";

// What conversion of units adds to decimal figures.
double withoutNoise(double value) { return std::round(value * 1e12) / 1e12 + 0.0; }

// The parameters of a conversion by their EPSG codes, in degrees and metres.
class Parameters {
public:
    Parameters(const ProjContext& projContext, const PJ* crs)
        : context(projContext), conversion(proj_crs_get_coordoperation(context.get(), crs)) {}

    double degrees(const char* code) const { return withoutNoise(find(code) / RADIANS_PER_DEGREE); }
    double metres(const char* code) const { return find(code); }

private:
    double find(const char* wanted) const {
        const int count = proj_coordoperation_get_param_count(context.get(), conversion.get());
        for (int i = 0; i < count; ++i) {
            const char* code = nullptr;
            double value = 0;
            double factor = 1;
            proj_coordoperation_get_param(context.get(), conversion.get(), i, nullptr, nullptr, &code, &value, nullptr,
                                          &factor, nullptr, nullptr, nullptr, nullptr);
            if (textOrEmpty(code) == wanted) return value * factor;
        }
        return 0;
    }

    const ProjContext& context;
    ProjPtr<PJ> conversion;
};

std::string write(const char* key, double value) { return std::string(" +") + key + "=" + writeDouble(value + 0.0); }

// "+axis" turns the coordinates round after the false origin is added, which changes its sign.
std::string writeLambertWestOrientated(const Parameters& of) {
    const double latitude = of.degrees(LATITUDE_OF_ORIGIN);
    return "+proj=lcc" + write("lat_1", latitude) + write("lat_0", latitude) +
           write("lon_0", of.degrees(LONGITUDE_OF_ORIGIN)) + write("k_0", of.metres(SCALE_AT_ORIGIN)) +
           write("x_0", -of.metres(FALSE_EASTING)) + write("y_0", of.metres(FALSE_NORTHING));
}

std::string writeBonneSouthOrientated(const Parameters& of) {
    return "+proj=bonne" + write("lat_1", of.degrees(LATITUDE_OF_ORIGIN)) +
           write("lon_0", of.degrees(LONGITUDE_OF_ORIGIN)) + write("x_0", -of.metres(FALSE_EASTING)) +
           write("y_0", -of.metres(FALSE_NORTHING));
}

// The false origin lies on the standard parallel, whose radius on the map is the one on the ellipsoid
// (IOGP Publication 373-7-2, Polar Stereographic variant C); "+y_0" counts from the pole.
std::string writePolarStereographicC(const Parameters& of, const ReferenceEllipsoid& ellipsoid) {
    const double parallel = of.degrees(STANDARD_PARALLEL);
    const Vector point = toGeocentric(ellipsoid, {0, parallel});
    const double toPole = parallel < 0 ? -point.x() : point.x();
    return "+proj=stere" + write("lat_0", parallel < 0 ? -90 : 90) + write("lat_ts", parallel) +
           write("lon_0", of.degrees(LONGITUDE_OF_FALSE_ORIGIN)) + write("x_0", of.metres(EASTING_AT_FALSE_ORIGIN)) +
           write("y_0", of.metres(NORTHING_AT_FALSE_ORIGIN) + toPole);
}

}  // namespace

std::string methodOf(const ProjContext& context, const PJ* crs) {
    if (proj_get_type(crs) != PJ_TYPE_PROJECTED_CRS) return "";
    const ProjPtr<PJ> conversion(proj_crs_get_coordoperation(context.get(), crs));
    const char* code = nullptr;
    proj_coordoperation_get_method_info(context.get(), conversion.get(), nullptr, nullptr, &code);
    return textOrEmpty(code);
}

std::optional<std::string> writeMethodText(const ProjContext& context, const PJ* crs) {
    const std::string method = methodOf(context, crs);
    const Parameters parameters(context, crs);
    if (method == LAMBERT_WEST_ORIENTATED) return writeLambertWestOrientated(parameters);
    if (method == BONNE_SOUTH_ORIENTATED) return writeBonneSouthOrientated(parameters);
    if (method == POLAR_STEREOGRAPHIC_C) return writePolarStereographicC(parameters, readEllipsoid(context, crs));
    return std::nullopt;
}

}  // namespace ProjDir
