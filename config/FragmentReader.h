#pragma once

#include <boost/property_tree/ptree.hpp>
#include <istream>
#include <string>

namespace CoordinateTransformation {

// The tree of the fragment that `stream` still holds. boost::property_tree::xml_parser_error for a malformed one: the
// tree reader's own where that reader refuses it, else with the fault that findFragmentFault finds.
boost::property_tree::ptree readFragment(std::istream& stream);

// The same of a text.
boost::property_tree::ptree readFragmentText(const std::string& text);

}  // namespace CoordinateTransformation
