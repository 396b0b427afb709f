#include <stdexcept>

#include "creation/CrsNameSyntax.h"

namespace CoordinateTransformation {

namespace {

constexpr char EPSG_PREFIX[] = "EPSG:";
constexpr std::size_t EPSG_PREFIX_LENGTH = sizeof(EPSG_PREFIX) - 1;
constexpr std::size_t LONGEST_BARE_NAME = 13;

}  // namespace

// name = "EPSG:" code [ "*" five characters code ] | code [ "*" code ]
//
// The five characters stand where the identifier of a compound CRS repeats the prefix; they are not looked at.
std::optional<EpsgNameTexts> parseEpsgName(const std::string& name) {
    const bool prefixed = name.compare(0, EPSG_PREFIX_LENGTH, EPSG_PREFIX) == 0;
    if (!prefixed && name.size() > LONGEST_BARE_NAME) return std::nullopt;
    const std::size_t prefixLength = prefixed ? EPSG_PREFIX_LENGTH : 0;
    const std::size_t star = name.find('*');
    if (star == std::string::npos) return EpsgNameTexts{name.substr(prefixLength), std::nullopt};
    const std::size_t second = star + 1 + prefixLength;
    if (second > name.size()) throw std::out_of_range("invalid string position");
    return EpsgNameTexts{name.substr(prefixLength, star - prefixLength), name.substr(second)};
}

}  // namespace CoordinateTransformation
