#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "CoordinateTransformation/Export.h"

namespace CoordinateTransformation {

/// A box of longitudes and latitudes in degrees, whatever the axis order of a CRS. It crosses the antimeridian where
/// its west is greater than its east.
struct GeographicBox {
    /// Least longitude, from -180 to 180.
    double west;
    /// Least latitude, from -90 to 90.
    double south;
    /// Greatest longitude, from -180 to 180.
    double east;
    /// Greatest latitude, from -90 to 90.
    double north;
};

/// What the registry says of a CRS, and what its definition in the PROJ directory is worth.
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
    /// Such as "ETRS89 / UTM zone 32N".
    std::string name;
    /// Which kind of CRS it is.
    Kind kind = Kind::PROJECTED;
    /// The area of use in words; empty if the registry has none.
    std::string area;
    /// A box around the area of use; nothing if the registry has none.
    std::optional<GeographicBox> box;
    /// The unit of the horizontal axes, such as "metre" or "degree".
    std::string unit;
    /// One unit in metres, or in radians for a geographic CRS.
    double unitLength = 1;
    /// Such as "European Terrestrial Reference System 1989 ensemble".
    std::string datum;
    /// Such as "EPSG:6258". CRS with the same one are on the same datum.
    std::string datumId;
    /// Where the shift to WGS 84 in the definition comes from: "EPSG:1149", "EPSG:5485 + EPSG:1149", "fitted" or the
    /// name of a grid. Empty if none is needed or none is known.
    std::string shiftSource;
    /// The accuracy of that shift in metres as the registry states it; nothing if it states none.
    std::optional<double> shiftAccuracy;
    /// The largest distance in metres between the definition and PROJ's best operation without grids over the area of
    /// use; nothing if PROJ knows no operation.
    std::optional<double> largestDistance;
    /// The codes that replace it, if the registry has deprecated it.
    std::vector<unsigned int> replacedBy;
};

/// Titles, areas, units and accuracies of the CRS in a PROJ directory: the file "epsg-info.csv", which a directory may
/// have or lack.
///
/// Threads: never changes once it is made; any number of threads may read it.
///
/// A value: owns its descriptions, and copies them when it is copied.
class COORDTRANS_EXPORT CrsDescriptions {
public:
    /// None at all.
    CrsDescriptions() = default;
    /// Reads a file. Misconfigured, which names the file, if it cannot be opened or read to its end or has more than
    /// 256 MB; and, with its line, for the first that is malformed. The first line counts as line 1.
    explicit CrsDescriptions(const std::string& path);

    /// Those of the PROJ directory that `CrsConfig::init` has settled for the process; none before, and none for a
    /// directory without the file. Valid for ever; REQUIRES that the `init` which settles the directory is over.
    static const CrsDescriptions& ofProjDirectory();

    /// The description of an EPSG code, or null. Borrowed, and valid while this object lives.
    const CrsDescription* find(unsigned int code) const;

    /// The descriptions, in ascending order of their codes.
    const CrsDescription* begin() const { return descriptions.data(); }
    /// Behind the last one.
    const CrsDescription* end() const { return descriptions.data() + descriptions.size(); }
    /// How many there are.
    std::size_t size() const { return descriptions.size(); }

private:
    std::vector<CrsDescription> descriptions;
};

}  // namespace CoordinateTransformation
