#pragma once

#include <string>

#include "tests/support/TemporaryFile.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

constexpr char PROJ_DIRECTORY[] = COORDTRANS_SOURCE_DIR "/data/proj";

inline CommonOptions optionsFor(const std::string& configFile = "") {
    CommonOptions options;
    options.projDir = PROJ_DIRECTORY;
    options.configFile = configFile;
    return options;
}

// A session without a configuration.
class UnconfiguredSession : public Session {
public:
    UnconfiguredSession() : Session(optionsFor()) {}
};

// A session with the given fragment as its configuration.
class ConfiguredSession {
public:
    explicit ConfiguredSession(const std::string& fragment) : file(fragment), started(optionsFor(file.path())) {}
    const Session& operator*() const { return started; }
    const Session* operator->() const { return &started; }

private:
    TemporaryFile file;
    Session started;
};

}  // namespace crsctl
