#include "CoordinateTransformation/CrsConfigData.h"

#include <algorithm>
#include <locale>

#include "config/Fragment.h"

namespace CoordinateTransformation {
namespace {

using boost::property_tree::ptree;

constexpr char IDENTIFIER_OF_CRS_84[] = "EPSG:4326";

boost::optional<std::string> readText(const ptree& element, const char* attribute) {
    return element.get_optional<std::string>(std::string("<xmlattr>.") + attribute);
}

void readAxisOrder(const ptree& element, boost::optional<bool>& eastNorth) {
    const boost::optional<std::string> axisOrder = readText(element, AXIS_ORDER);
    if (axisOrder == std::string("EN")) eastNorth = true;
    if (axisOrder == std::string("NE")) eastNorth = false;
}

bool isDecimalDigit(char character) { return character >= '0' && character <= '9'; }

}  // namespace

const int CrsConfigData::DEFAULT_NUMBER_OF_PLACES_DEGREE;
const int CrsConfigData::DEFAULT_NUMBER_OF_PLACES_METER;

CrsConfigData::CrsConfigData(const std::string& name, std::string mapToEpsgCode) {
    if (name == CRS_84) {
        mapToCrs84();
    } else if (!mapToEpsgCode.empty()) {
        alias = name;
        identifier = withEpsgPrefix(mapToEpsgCode);
    } else {
        // Unlike the text of an element, the name is not upper-cased, so it may be a URN.
        identifier = name;
    }
}

CrsConfigData::CrsConfigData(std::pair<const std::string, ptree> element) {
    const ptree& entry = element.second;
    const std::string& text = entry.data();
    if (text == CRS_84) {
        mapToCrs84();
        return;
    }
    const boost::optional<std::string> mapToEpsgCode = readText(entry, MAP_TO_EPSG_CODE);
    if (mapToEpsgCode) alias = text;
    identifier = withEpsgPrefix(mapToEpsgCode.value_or(text));
    numberOfDecimalPlaces = readInteger(entry, NUMBER_OF_DECIMAL_PLACES);
    preventDoubleCoordinateOutput = readBoolean(entry, SUPPRESS_DUPLICATE_COORDINATES).value_or(false);
    readAxisOrder(entry, axisOrderEastNorthOrLonLat);
}

std::string CrsConfigData::getIdentifier() const { return identifier; }

std::string CrsConfigData::getAlias() const { return alias; }

std::string CrsConfigData::getAliasOrIdentifier() const { return isMapped() ? alias : identifier; }

boost::optional<bool> CrsConfigData::getAxisOrderEastNorthOrLonLat() const { return axisOrderEastNorthOrLonLat; }

boost::optional<int> CrsConfigData::getNumberOfDecimalPlaces() const { return numberOfDecimalPlaces; }

bool CrsConfigData::getPreventDoubleCoordinateOutput() const { return preventDoubleCoordinateOutput; }

bool CrsConfigData::isMapped() const { return !alias.empty(); }

bool CrsConfigData::sameIdentifierOrAliases(const CrsConfigData& other) const {
    return identifier == other.identifier && alias == other.alias;
}

// Intended: the whole identifier is upper-cased, by the global locale. A configured "epsg:4326" is EPSG:4326.
std::string CrsConfigData::withEpsgPrefix(const std::string& code) {
    std::string upper = code;
    const std::locale global;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [&global](char character) { return std::toupper(character, global); });
    return !upper.empty() && isDecimalDigit(upper.front()) ? "EPSG:" + upper : upper;
}

void CrsConfigData::mapToCrs84() {
    alias = CRS_84;
    identifier = IDENTIFIER_OF_CRS_84;
    axisOrderEastNorthOrLonLat = true;
}

}  // namespace CoordinateTransformation
