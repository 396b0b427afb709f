#pragma once

#include <memory>
#include <string>

#include "CoordinateTransformation/CrsConfig.h"

namespace crsctl {

// What every command takes.
struct CommonOptions {
    std::string configFile;  // empty: not given
    std::string projDir;     // empty: not given
    bool json = false;
};

// A configuration of the library with its creator and its PROJ directory, not initialised. SetUpError when the
// environment names a subsystem that does not exist.
std::unique_ptr<CoordinateTransformation::CrsConfig> makeConfig(const std::string& projDirOption);

// The library, started as the server starts it: with the configuration of `options`, or without any entry.
// SetUpError, which names the file or directory, when it does not start.
class Session {
public:
    explicit Session(const CommonOptions& options);

    const CoordinateTransformation::CrsConfig& config() const { return *crsConfig; }
    const CoordinateTransformation::CrsCreator& creator() const { return crsConfig->getCreator(); }
    // Whether a configuration was given, so that it can be said what the server offers.
    bool isConfigured() const { return configured; }

private:
    std::unique_ptr<CoordinateTransformation::CrsConfig> crsConfig;
    bool configured;
};

}  // namespace crsctl
