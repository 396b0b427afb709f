// Reads configuration fragments. An accepted fragment has the elements that the scanner finds. A refused one raises the
// error of the XML reader.

#include <boost/property_tree/xml_parser.hpp>

#include "config/Fragment.h"
#include "fuzz/Input.h"

using namespace CoordinateTransformation;
using boost::property_tree::ptree;

namespace {

void collectElements(const ptree& tree, std::size_t depth, std::vector<std::string>& names) {
    Fuzz::require(depth <= MAX_NESTING);
    for (const ptree::value_type& node : tree) {
        if (!isElement(node)) continue;
        names.push_back(node.first);
        collectElements(node.second, depth + 1, names);
    }
}

void requireSameElements(const std::string& text, const ptree& tree) {
    std::vector<std::string> inTree;
    collectElements(tree, 0, inTree);
    std::vector<std::string> scanned;
    for (const FragmentElement& element : fragmentElements(text)) scanned.emplace_back(element.name);
    Fuzz::require(scanned == inTree);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CrsConfig config;
    const std::string text = Fuzz::text(data, size);
    std::istringstream fragment(text);
    try {
        config.configure(fragment);
        Fuzz::require(!findFragmentFault(text));
        requireSameElements(text, readFragmentText(text));
    } catch (const boost::property_tree::xml_parser_error&) {
        Fuzz::require(config.getConfiguredCrs()->empty());
        Fuzz::require(findFragmentFault(text).has_value());
    }
    for (const CrsConfigData& entry : *config.getConfiguredCrs())
        Fuzz::require(entry.isMapped() == !entry.getAlias().empty());
    return 0;
}
