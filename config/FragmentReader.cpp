#include "config/FragmentReader.h"

#include <boost/property_tree/xml_parser.hpp>
#include <streambuf>

#include "config/FragmentScanner.h"
#include "text/FileText.h"

namespace CoordinateTransformation {

namespace {

using boost::property_tree::ptree;
using boost::property_tree::xml_parser_error;

// Reads a text where it is; a string stream would copy it.
class TextBuffer : public std::streambuf {
public:
    explicit TextBuffer(const std::string& text) {
        // Never written to: a stream buffer has no other way to say what it reads.
        char* const begin = const_cast<char*>(text.data());
        setg(begin, begin, begin + text.size());
    }
};

xml_parser_error errorOf(const FragmentFault& fault) { return {fault.message, "", fault.place.line}; }

}  // namespace

ptree readFragment(std::istream& stream) {
    const std::string text = readUpTo(*stream.rdbuf(), LARGEST_FRAGMENT + 1);
    if (!stream.good()) throw xml_parser_error("read error", "", 0);
    return readFragmentText(text);
}

ptree readFragmentText(const std::string& text) {
    const std::optional<FragmentFault> fault = findFragmentFault(text);
    if (fault && fault->tooMuchForTheTreeReader) throw errorOf(*fault);
    TextBuffer buffer(text);
    std::istream stream(&buffer);
    ptree tree;
    boost::property_tree::read_xml(stream, tree);
    if (fault) throw errorOf(*fault);
    return tree;
}

}  // namespace CoordinateTransformation
