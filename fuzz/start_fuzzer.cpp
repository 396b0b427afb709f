// Starts of a server: a fragment is read and started on data/proj, or refused with an exception of the library. A
// configuration that has started answers every name under which it offers a CRS, and starts again with the same names.

#include <stdexcept>

#include <boost/property_tree/xml_parser.hpp>

#include "fuzz/Input.h"

using namespace CoordinateTransformation;

namespace {

struct Restartable : CrsConfig {
    Restartable() { injectCreator(new Proj4CrsCreator(*this)); }
    using CrsConfig::reinit;
};

bool isRead(CrsConfig& config, const std::string& text) {
    std::istringstream fragment(text);
    try {
        config.configure(fragment);
        return true;
    } catch (const boost::property_tree::xml_parser_error&) {
        return false;
    }
}

// A compound identifier whose second prefix is missing raises std::out_of_range.
bool isStarted(CrsConfig& config) {
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
    if (!isRead(config, Fuzz::text(data, size)) || !isStarted(config)) return 0;
    requireAnswers(config);
    const auto names = config.getConfiguredCrsIdentifiers();
    config.reinit();
    Fuzz::require(config.getConfiguredCrsIdentifiers() == names);
    return 0;
}
