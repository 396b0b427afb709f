#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include <boost/optional/optional.hpp>
#include <boost/property_tree/ptree.hpp>

#include "CoordinateTransformation/Export.h"

namespace CoordinateTransformation {

/// One CRS that the server offers: the identifier that the creator is asked for, the alias under which it is
/// offered, and its output settings, which the library only holds.
///
/// Threads: a plain value, fixed after construction.
///
/// Owns its texts; a copy is deep.
class COORDTRANS_EXPORT CrsConfigData {
public:
    /// Decimal places of an angular CRS for which none are configured.
    static const int DEFAULT_NUMBER_OF_PLACES_DEGREE = 8;
    /// Decimal places of a CRS in metres for which none are configured.
    static const int DEFAULT_NUMBER_OF_PLACES_METER = 3;

    /// `name` "CRS:84" is EPSG:4326 in east-north order, whatever the mapping. Any other name with a mapping
    /// becomes the alias of the mapped code; without one it is the identifier exactly as given.
    explicit CrsConfigData(const std::string& name, std::string mapToEpsgCode = "");
    /// From an entry element of the configuration document: its text and its attributes "mapToEpsgCode",
    /// "numberOfDecimalPlaces", "suppressDuplicatCoordinates" and "axisOrder". The identifier is upper-cased
    /// and a leading digit gets the prefix "EPSG:". An attribute that does not convert counts as absent. The
    /// text "CRS:84" means what it means above, and its attributes are ignored.
    explicit CrsConfigData(std::pair<const std::string, boost::property_tree::ptree> element);

    /// The name that the creator is asked for, "EPSG:4326" for example.
    std::string getIdentifier() const;
    /// Empty when there is none.
    std::string getAlias() const;
    /// The alias, or the identifier when there is none.
    std::string getAliasOrIdentifier() const;
    /// Axis-order override for the alias, true for easting or longitude first; empty for the CRS's own order.
    boost::optional<bool> getAxisOrderEastNorthOrLonLat() const;
    /// Empty for the default of the CRS's unit.
    boost::optional<int> getNumberOfDecimalPlaces() const;
    /// Whether the output suppresses duplicate coordinates. Starts false.
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
