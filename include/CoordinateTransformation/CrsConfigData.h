#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include <boost/optional/optional.hpp>
#include <boost/property_tree/ptree.hpp>

#include "CoordinateTransformation/Export.h"

namespace CoordinateTransformation {

/// One CRS that the server offers: the identifier that the creator resolves, the alias under which the CRS is offered,
/// and its output settings, which the library only stores.
///
/// Threads: a plain value that never changes.
///
/// Owns its texts; a copy is deep.
class COORDTRANS_EXPORT CrsConfigData {
public:
    /// The decimal places of a CRS in degrees when none are configured.
    static const int DEFAULT_NUMBER_OF_PLACES_DEGREE = 8;
    /// The decimal places of a CRS in metres when none are configured.
    static const int DEFAULT_NUMBER_OF_PLACES_METER = 3;

    /// The `name` "CRS:84" is EPSG:4326 in east-north order, whatever the mapping. Any other name with a mapping is the
    /// alias of the mapped code. Without a mapping the name is the identifier, exactly as given.
    explicit CrsConfigData(const std::string& name, std::string mapToEpsgCode = "");
    /// Reads an entry element of the configuration document: its text and its attributes "mapToEpsgCode",
    /// "numberOfDecimalPlaces", "suppressDuplicatCoordinates" and "axisOrder". The identifier is upper-cased, and a
    /// leading digit gets the prefix "EPSG:". An attribute that cannot be converted counts as absent. The text "CRS:84"
    /// has the meaning above, and its attributes are ignored.
    explicit CrsConfigData(std::pair<const std::string, boost::property_tree::ptree> element);

    /// The name that the creator resolves, for example "EPSG:4326".
    std::string getIdentifier() const;
    /// The alias; empty when there is none.
    std::string getAlias() const;
    /// The alias, or the identifier when there is none.
    std::string getAliasOrIdentifier() const;
    /// The axis order of the alias, true for easting or longitude first. Empty when the CRS's own order applies.
    boost::optional<bool> getAxisOrderEastNorthOrLonLat() const;
    /// The configured decimal places. Empty when the default of the CRS's unit applies.
    boost::optional<int> getNumberOfDecimalPlaces() const;
    /// Whether the output omits repeated coordinates; false unless configured.
    bool getPreventDoubleCoordinateOutput() const;
    /// Whether the entry has an alias.
    bool isMapped() const;
    /// Whether both the identifiers and the aliases are equal.
    bool sameIdentifierOrAliases(const CrsConfigData& other) const;

private:
    COORDTRANS_INTERNAL static std::string withEpsgPrefix(const std::string& code);
    COORDTRANS_INTERNAL void mapToCrs84();

    std::string identifier;
    std::string alias;
    bool preventDoubleCoordinateOutput = false;
    boost::optional<bool> axisOrderEastNorthOrLonLat;
    boost::optional<std::int32_t> numberOfDecimalPlaces;
};

}  // namespace CoordinateTransformation
