#pragma once

#include <array>
#include <cstddef>
#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/property_tree/ptree.hpp>

namespace CoordinateTransformation {

// The tree reader recurses for each level of elements; this many fit a stack of 256 kB.
constexpr std::size_t DEEPEST_NESTING = 256;

// Beyond any fragment; 256 MB.
constexpr std::size_t LARGEST_FRAGMENT = std::size_t{256} << 20;

// A top-level element of the fragment, and what the entries in it are called.
struct FragmentContainer {
    const char* name;
    // A name that is empty stands for none.
    std::array<std::string_view, 2> entryNames;

    bool holds(std::string_view element) const;
};

// In the order in which they are read, whatever their order in the text.
constexpr FragmentContainer FRAGMENT_CONTAINERS[] = {{"CrsConfiguration", {"CRS", ""}},
                                                     {"SRSList", {"EPSGCode", "SRS"}}};

// The attributes of an entry.
constexpr char MAP_TO_EPSG_CODE[] = "mapToEpsgCode";
constexpr char NUMBER_OF_DECIMAL_PLACES[] = "numberOfDecimalPlaces";
// Spelled so by every configuration.
constexpr char SUPPRESS_DUPLICATE_COORDINATES[] = "suppressDuplicatCoordinates";
constexpr char AXIS_ORDER[] = "axisOrder";

// Lines and columns count from 1, columns in bytes.
struct FragmentPlace {
    std::size_t line = 1;
    std::size_t column = 1;
};

// Why a text is no fragment, and where that shows.
struct FragmentFault {
    std::string message;
    FragmentPlace place;
    // The tree reader would not survive the text.
    bool exceedsTreeReader = false;
};

// A start tag. The name is part of the text.
struct FragmentElement {
    std::string_view name;
    FragmentPlace place;
};

// The first fault of a text, or nothing for a fragment. Markup is taken apart exactly as the property tree's reader
// does it, so that both see the same elements; what that reader lets pass is a fault here:
//
//   - more than DEEPEST_NESTING elements inside each other, more than LARGEST_FRAGMENT bytes, a NUL byte, UTF-16
//   - an end tag of another name than its start tag
//   - in text and attribute values an "&" that begins neither one of the five entities of XML nor a reference to a
//     character of XML; entities that a document type declares are not replaced by that reader, and so are unknown
std::optional<FragmentFault> findFragmentFault(std::string_view text);

// The start tags of a text in its order, up to the first fault.
std::vector<FragmentElement> fragmentElements(std::string_view text);

// The tree of the fragment that `stream` still holds. boost::property_tree::xml_parser_error for a malformed one: the
// tree reader's own where that reader refuses it, else with the fault that findFragmentFault finds.
boost::property_tree::ptree readFragment(std::istream& stream);

// The same of a text.
boost::property_tree::ptree readFragmentText(const std::string& text);

}  // namespace CoordinateTransformation
