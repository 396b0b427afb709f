#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/optional/optional.hpp>
#include <boost/property_tree/ptree.hpp>

namespace CoordinateTransformation {

// The tree reader recurses for each level of elements. This many levels fit a stack of 256 kB.
constexpr std::size_t MAX_NESTING = 256;

// The largest fragment that is read, 256 MB. Every valid fragment is smaller.
constexpr std::size_t MAX_FRAGMENT_SIZE = std::size_t{256} << 20;

// A top-level element of the fragment and the names of its entries.
struct FragmentContainer {
    const char* name;
    // An empty name means that there is none.
    std::array<std::string_view, 2> entryNames;

    bool holds(std::string_view element) const;
};

// In the order of reading, whatever their order in the text.
constexpr FragmentContainer FRAGMENT_CONTAINERS[] = {{"CrsConfiguration", {"CRS", ""}},
                                                     {"SRSList", {"EPSGCode", "SRS"}}};

// The attributes of an entry.
constexpr char MAP_TO_EPSG_CODE[] = "mapToEpsgCode";
constexpr char NUMBER_OF_DECIMAL_PLACES[] = "numberOfDecimalPlaces";
// Every configuration has this spelling.
constexpr char SUPPRESS_DUPLICATE_COORDINATES[] = "suppressDuplicatCoordinates";
constexpr char AXIS_ORDER[] = "axisOrder";
constexpr const char* ENTRY_ATTRIBUTES[] = {MAP_TO_EPSG_CODE, NUMBER_OF_DECIMAL_PLACES, SUPPRESS_DUPLICATE_COORDINATES,
                                            AXIS_ORDER};

// The elements of a fragment that its reader comes to.
enum class FragmentRole {
    CONTAINER,           // is read
    ENTRY,               // a child of a container, is read
    REPEATED_CONTAINER,  // is ignored, because only the first container of a name is read
    UNKNOWN_CONTAINER,   // is ignored
    UNKNOWN_ENTRY        // a child of a container, is ignored
};

// Receives an element, and the container that it is or is in; null for an unknown one.
using FragmentVisitor = std::function<void(FragmentRole role, const boost::property_tree::ptree::value_type& element,
                                           const FragmentContainer* container)>;

// Visits the top-level elements of a fragment and the children of its containers in the order of reading: each
// container of FRAGMENT_CONTAINERS with its children, then the unknown ones.
void visitFragment(const boost::property_tree::ptree& fragment, const FragmentVisitor& visit);

// Whether a node of the tree is an element. Attributes and comments are nodes too.
bool isElement(const boost::property_tree::ptree::value_type& node);

// An entry with this text is a mapping without an attribute. Its attributes are ignored.
constexpr char CRS_84[] = "CRS:84";

// Reads an attribute of an entry in the classic locale, because another global locale could accept grouped digits.
// Returns nothing if the attribute is missing or does not convert.
boost::optional<int> readInteger(const boost::property_tree::ptree& entry, const char* attribute);
boost::optional<bool> readBoolean(const boost::property_tree::ptree& entry, const char* attribute);

// Lines and columns count from 1; a column is a byte.
struct FragmentPlace {
    std::size_t line = 1;
    std::size_t column = 1;
};

// The reason why a text is not a fragment, and its place.
struct FragmentFault {
    std::string message;
    FragmentPlace place;
    // Whether the text would crash the tree reader.
    bool exceedsTreeReader = false;
};

// A start tag. The name is a part of the text.
struct FragmentElement {
    std::string_view name;
    FragmentPlace place;
};

// The first fault of a text; nothing for a fragment. Markup is parsed exactly as the property tree's reader does it, so
// that both find the same elements. The following are faults, although that reader accepts them:
//
//   - more than MAX_NESTING elements inside each other, more than MAX_FRAGMENT_SIZE bytes, a NUL byte, UTF-16
//   - an end tag whose name differs from that of its start tag
//   - in text and attribute values an "&" that begins neither one of the five entities of XML nor a reference to a
//     character of XML; that reader does not replace entities of a document type, so they are unknown
std::optional<FragmentFault> findFragmentFault(std::string_view text);

// The start tags of a text in text order, up to the first fault.
std::vector<FragmentElement> fragmentElements(std::string_view text);

// Reads the rest of `stream` as a fragment. For a malformed one throws boost::property_tree::xml_parser_error: the tree
// reader's own if it refuses the text, otherwise one with the fault that findFragmentFault finds.
boost::property_tree::ptree readFragment(std::istream& stream);

// Reads a fragment from a text in the same way.
boost::property_tree::ptree readFragmentText(const std::string& text);

}  // namespace CoordinateTransformation
