#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace CoordinateTransformation {

// The spellings of a CRS name, taken apart into texts. Nothing is converted, trimmed or folded here; nothing
// is returned for a name in another spelling.

struct OgcUrnTexts {
    std::string firstCode;
    // Empty for a CRS that is not compound, and for a second component without a code.
    std::string secondCode;
    // Those of both components, joined without a separator.
    std::string version;
};

struct EpsgNameTexts {
    std::string firstCode;
    std::optional<std::string> secondCode;
};

// The position after "urn:ogc:" or "urn:x-ogc:".
std::optional<std::size_t> skipOgcUrnHead(const std::string& name);

// The position after "http:", any number of "/", the OGC definitions host and "/".
std::optional<std::size_t> skipOgcUrlHead(const std::string& name);

// What follows either head.
std::optional<OgcUrnTexts> parseOgcUrnBody(const std::string& name, std::size_t startPos);

// A bare or prefixed code or pair of codes. std::out_of_range when the second code would begin beyond the end
// of the name.
std::optional<EpsgNameTexts> parseEpsgName(const std::string& name);

// The code after the last "epsg.xml#".
std::optional<std::string> parseGmlReference(const std::string& name);

// The code after "urn:EPSG:geographicCRS:".
std::optional<std::string> parseWfs11Urn(const std::string& name);

}  // namespace CoordinateTransformation
