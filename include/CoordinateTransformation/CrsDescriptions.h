#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "CoordinateTransformation/Export.h"

namespace CoordinateTransformation {

/// A box of longitudes and latitudes in degrees, whatever the axis order of a CRS. A box across the antimeridian has
/// its west greater than its east.
struct GeographicBox {
    /// The westernmost longitude, from -180 to 180.
    double west;
    /// The least latitude, from -90 to 90.
    double south;
    /// The easternmost longitude, from -180 to 180.
    double east;
    /// The greatest latitude, from -90 to 90.
    double north;
};

/// The registry's description of a CRS, and the accuracy of its definition in the PROJ directory.
struct CrsDescription {
    /// The kinds of CRS.
    enum class Kind {
        /// Longitude and latitude, with or without a height.
        GEOGRAPHIC,
        /// Three axes from the centre of the earth.
        GEOCENTRIC,
        /// Coordinates in a plane.
        PROJECTED,
        /// A horizontal CRS with a vertical one.
        COMPOUND
    };

    /// The EPSG code.
    unsigned int code = 0;
    /// The title, such as "ETRS89 / UTM zone 32N".
    std::string name;
    /// The kind of the CRS.
    Kind kind = Kind::PROJECTED;
    /// The area of use in words; empty if the registry has none.
    std::string area;
    /// A box around the area of use; nothing if the registry has none.
    std::optional<GeographicBox> box;
    /// The unit of the horizontal axes, such as "metre" or "degree".
    std::string unit;
    /// The length of one unit in metres, or its angle in radians for a geographic CRS.
    double unitLength = 1;
    /// The name of the datum, such as "European Terrestrial Reference System 1989 ensemble".
    std::string datum;
    /// The identifier of the datum, such as "EPSG:6258". CRS with the same identifier are on the same datum.
    std::string datumId;
    /// The origin of the shift to WGS 84 in the definition: "EPSG:1149", "EPSG:5485 + EPSG:1149", "fitted" or the name
    /// of a grid. Empty if the CRS needs no shift or none is known.
    std::string shiftSource;
    /// The accuracy of that shift in metres, from the registry; nothing if the registry has none.
    std::optional<double> shiftAccuracy;
    /// The largest distance in metres between the definition and PROJ's best operation without grids, over the area of
    /// use; nothing if PROJ knows no operation.
    std::optional<double> largestDistance;
    /// The codes that replace a deprecated CRS; empty for any other.
    std::vector<unsigned int> replacedBy;
};

/// Titles, areas, units and accuracies of the CRS in a PROJ directory, from its optional file "epsg-info.csv".
///
/// Threads: an object never changes; any number of threads may read it.
///
/// A value: owns its descriptions, and a copy has copies of them.
class COORDTRANS_EXPORT CrsDescriptions {
public:
    /// Makes an object without descriptions.
    CrsDescriptions() = default;
    /// Reads a file. Throws Misconfigured, naming the file, if it cannot be opened or read to its end or is larger than
    /// 256 MB, and, naming also the line, at the first malformed line. Lines count from 1.
    explicit CrsDescriptions(const std::string& path);

    /// The descriptions in the PROJ directory that `CrsConfig::init` has settled for the process. Empty before that,
    /// and for a directory without the file. Valid until the process ends. REQUIRES: the `init` that settles the
    /// directory has returned.
    static const CrsDescriptions& ofProjDirectory();

    /// The description of an EPSG code, or null. Borrowed, and valid while this object lives.
    const CrsDescription* find(unsigned int code) const;

    /// The descriptions, in ascending order of their codes.
    const CrsDescription* begin() const { return descriptions.data(); }
    /// The end of the descriptions.
    const CrsDescription* end() const { return descriptions.data() + descriptions.size(); }
    /// The number of descriptions.
    std::size_t size() const { return descriptions.size(); }

private:
    std::vector<CrsDescription> descriptions;
};

}  // namespace CoordinateTransformation
