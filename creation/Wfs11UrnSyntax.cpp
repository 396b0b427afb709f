#include "creation/CrsNameSyntax.h"

namespace CoordinateTransformation {

namespace {

constexpr char WFS_1_1_HEAD[] = "urn:EPSG:geographicCRS:";
constexpr std::size_t WFS_1_1_HEAD_LENGTH = sizeof(WFS_1_1_HEAD) - 1;

}  // namespace

// name = "urn:EPSG:geographicCRS:" code
std::optional<std::string> parseWfs11Urn(const std::string& name) {
    if (name.compare(0, WFS_1_1_HEAD_LENGTH, WFS_1_1_HEAD) != 0) return std::nullopt;
    return name.substr(WFS_1_1_HEAD_LENGTH);
}

}  // namespace CoordinateTransformation
