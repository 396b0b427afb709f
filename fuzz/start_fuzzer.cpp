// Starts a server with a fragment on data/proj. A refused fragment raises an exception. A started configuration answers
// every name that it offers, and can start again with the same names.

#include <stdexcept>

#include <boost/property_tree/xml_parser.hpp>

#include "fuzz/Input.h"

using namespace CoordinateTransformation;

namespace {

struct Restartable : CrsConfig {
    Restartable() { injectCreator(new Proj4CrsCreator(*this)); }
    using CrsConfig::reinit;
};

bool configures(CrsConfig& config, const std::string& text) {
    std::istringstream fragment(text);
    try {
        config.configure(fragment);
        return true;
    } catch (const boost::property_tree::xml_parser_error&) {
        return false;
    }
}

// A compound identifier without the second prefix raises std::out_of_range.
bool starts(CrsConfig& config) {
    try {
        config.init();
        return true;
    } catch (const structured_exception& refused) {
        Fuzz::require(*refused.what() != '\0');
    } catch (const std::out_of_range&) {
    }
    return false;
}

void requireAnswers(const CrsConfig& config) {
    for (const CrsConfigData& entry : *config.getConfiguredCrs())
        Fuzz::require(config.getCreator().createFromName(entry.getIdentifier(), false, false).get() != nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Restartable config;
    config.setConfigProperty("Proj4ConfigDir", COORDTRANS_SOURCE_DIR "/data/proj");
    if (!configures(config, Fuzz::text(data, size)) || !starts(config)) return 0;
    requireAnswers(config);
    const auto names = config.getConfiguredCrsIdentifiers();
    config.reinit();
    Fuzz::require(config.getConfiguredCrsIdentifiers() == names);
    return 0;
}
