#include "creation/CrsNameSyntax.h"

namespace CoordinateTransformation {

namespace {

constexpr char GML_DICTIONARY[] = "epsg.xml#";
constexpr std::size_t GML_DICTIONARY_LENGTH = sizeof(GML_DICTIONARY) - 1;

}  // namespace

// name = anything "epsg.xml#" code, the last "epsg.xml#" counts
std::optional<std::string> parseGmlReference(const std::string& name) {
    const std::size_t found = name.rfind(GML_DICTIONARY);
    if (found == std::string::npos) return std::nullopt;
    return name.substr(found + GML_DICTIONARY_LENGTH);
}

}  // namespace CoordinateTransformation
