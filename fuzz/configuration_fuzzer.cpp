// Configuration fragments: read, or refused by the XML reader with its own error.

#include <boost/property_tree/xml_parser.hpp>

#include "fuzz/Input.h"

using namespace CoordinateTransformation;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CrsConfig config;
    std::istringstream fragment(Fuzz::text(data, size));
    try {
        config.configure(fragment);
    } catch (const boost::property_tree::xml_parser_error&) {
        Fuzz::require(config.getConfiguredCrs()->empty());
    }
    for (const CrsConfigData& entry : *config.getConfiguredCrs())
        Fuzz::require(entry.isMapped() == !entry.getAlias().empty());
    return 0;
}
