#pragma once

#include <string>

namespace CoordinateTransformation {

/// Describes the output form that AbstractCrs::getAliasOrAsFormat writes. A plain value.
struct CRSindicationFormatInfo {
    /// 0 for an OGC URN, 1 for a template URL, 2 for an OGC http URL, 3 for the identifier. Any other value gives an
    /// empty text.
    unsigned int format = 0;
    /// Formats 0 and 2: the EPSG dataset version to write. When it is empty, the CRS's own is written.
    std::string version;
    /// Format 1: the part before the "#".
    std::string urlBase;
    /// Format 1: the template for a CRS without secondary code; see AbstractCrs::getAsURL.
    std::string urlTemplate;
    /// Format 1: the template for a CRS with a secondary code.
    std::string urlCompoundTemplate;
};

}  // namespace CoordinateTransformation
