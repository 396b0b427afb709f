#pragma once

#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "CoordinateTransformation/CoordinateTransformation.h"

// A server that starts and uses the library through its public headers only.
namespace IntegrationTest {

using CoordinateTransformation::AbstractCrs;
using CoordinateTransformation::Crs;
using CoordinateTransformation::CrsConfig;
using CoordinateTransformation::CrsCreator;

inline std::istringstream readSourceFile(const std::string& path) {
    const std::ifstream file(std::string(COORDTRANS_SOURCE_DIR) + "/" + path);
    if (!file) throw std::runtime_error("cannot read " + path);
    std::ostringstream text;
    text << file.rdbuf();
    return std::istringstream(text.str());
}

class Server {
public:
    // Offers the CRS of the example configuration.
    Server() : Server(readSourceFile("data/crs-configuration.xml")) {}

    explicit Server(std::istringstream document) {
        unsetenv("USE_COORD_TRANSFORMATION_SUBSYSTEM");
        config.reset(CrsConfig::createDefaultConfigOrFromEnvVar());
        config->setConfigProperty("Proj4ConfigDir", COORDTRANS_SOURCE_DIR "/data/proj");
        config->configure(document);
        config->init();
    }

    const CrsCreator& creator() const { return config->getCreator(); }
    // Returns the CRS that a request names. The server must offer it.
    Crs request(const std::string& name) const { return creator().createFromName(name, true, true); }
    // Returns any CRS that the library knows.
    Crs known(const std::string& name) const { return creator().createFromName(name, true, false); }

    std::unique_ptr<CrsConfig> config;
};

// An exception as a server would report it. `type` is the first class in raisedBy that catches it.
struct Raised {
    std::string type;
    std::string text;
    std::string code;

    bool operator==(const Raised& other) const {
        return type == other.type && text == other.text && code == other.code;
    }
};

inline void PrintTo(const Raised& raised, std::ostream* stream) {
    *stream << raised.type << " \"" << raised.text << "\" " << raised.code;
}

template <typename Action>
Raised raisedBy(Action action) {
    try {
        action();
    } catch (const CoordinateTransformation::CrsUnknownSyntaxOrAlias& failure) {
        return {"CrsUnknownSyntaxOrAlias", failure.what(), failure.getServiceExceptionCode()};
    } catch (const CoordinateTransformation::CrsNotConfigured& failure) {
        return {"CrsNotConfigured", failure.what(), failure.getServiceExceptionCode()};
    } catch (const CoordinateTransformation::Misconfigured& failure) {
        return {"Misconfigured", failure.what(), failure.getServiceExceptionCode()};
    } catch (const CoordinateTransformation::TransExecException& failure) {
        return {"TransExecException", failure.what(), failure.getServiceExceptionCode()};
    } catch (const CoordinateTransformation::BBoxOutOfBounds& failure) {
        return {"BBoxOutOfBounds", failure.what(), failure.getServiceExceptionCode()};
    } catch (const QSHelpers::ConversionError& failure) {
        return {"ConversionError", failure.what(), failure.getServiceExceptionCode()};
    } catch (const QSHelpers::UnexpectedException& failure) {
        return {"UnexpectedException", failure.what(), failure.getServiceExceptionCode()};
    } catch (const std::out_of_range& failure) {
        return {"std::out_of_range", failure.what(), ""};
    }
    return {"nothing", "", ""};
}

}  // namespace IntegrationTest
