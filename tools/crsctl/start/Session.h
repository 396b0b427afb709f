#pragma once

#include <memory>
#include <string>

#include "CoordinateTransformation/Crs.h"
#include "CoordinateTransformation/CrsConfig.h"
#include "CoordinateTransformation/CrsCreator.h"

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

// Whether the text is one of the OGC's names for WGS 84 with the longitude first. The library knows them only where a
// configuration maps them.
bool isCrs84(const std::string& name);

// The library, started as the server starts it: with the configuration of `options`, or without any entry.
// SetUpError, which names the file or directory, when it does not start.
class Session {
public:
    explicit Session(const CommonOptions& options);

    const CoordinateTransformation::CrsConfig& config() const { return *crsConfig; }
    const CoordinateTransformation::CrsCreator& creator() const { return crsConfig->getCreator(); }
    // Whether a configuration was given, so that it can be said what the server offers.
    bool isConfigured() const { return configured; }

    // As that of the creator, with the check of what is offered if there is a configuration. Without one, what isCrs84
    // knows is WGS 84 with the longitude first.
    CoordinateTransformation::Crs createFromName(const std::string& name, bool throwIfMissing) const;

private:
    const CoordinateTransformation::CrsCreator& creatorFor(const std::string& name) const;

    std::string projDir;
    std::unique_ptr<CoordinateTransformation::CrsConfig> crsConfig;
    bool configured;
    // Made when it is needed: it does not start if the PROJ directory lacks 4326.
    mutable std::unique_ptr<CoordinateTransformation::CrsConfig> crs84Config;
};

}  // namespace crsctl
