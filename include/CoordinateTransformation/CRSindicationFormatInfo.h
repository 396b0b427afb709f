#pragma once

#include <string>

namespace CoordinateTransformation {

/// Describes the output form that AbstractCrs::getAliasOrAsFormat writes. A plain value.
struct CRSindicationFormatInfo {
    /// 0 = OGC URN, 1 = template URL, 2 = OGC http URL, 3 = identifier; any other value gives an empty text.
    unsigned int format = 0;
    /// Formats 0 and 2: EPSG dataset version, in place of the CRS's own when not empty.
    std::string version;
    /// Format 1: the part before the "#".
    std::string urlBase;
    /// Format 1: template for a CRS without secondary code; see AbstractCrs::getAsURL.
    std::string urlTemplate;
    /// Format 1: template for a CRS with a secondary code.
    std::string urlCompoundTemplate;
};

}  // namespace CoordinateTransformation
