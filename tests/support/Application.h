#pragma once

#include <string>

#include <gtest/gtest.h>

#include "proj/classic/ProjHandles.h"
#include "tests/support/ProcessServer.h"
#include "tests/support/TemporaryDirectory.h"

// A program that uses PROJ by itself, beside the library.
namespace ProcessTest {

using ClassicProj::ProjPtr;
using TestSupport::TemporaryDirectory;

// What PROJ tells about a context; null is the default one of the process.
struct Settings {
    explicit Settings(PJ_CONTEXT* context)
        : database(textOf(proj_context_get_database_path(context))),
          writable(textOf(proj_context_get_user_writable_directory(context, 0))),
          logLevel(proj_log_level(context, PJ_LOG_TELL)),
          network(proj_context_is_network_enabled(context)),
          initRules(proj_context_get_use_proj4_init_rules(context, 0)),
          error(proj_context_errno(context)) {}

    bool operator==(const Settings& other) const {
        return database == other.database && writable == other.writable && logLevel == other.logLevel &&
               network == other.network && initRules == other.initRules && error == other.error;
    }

    static std::string textOf(const char* text) { return text == nullptr ? "" : text; }

    std::string database;
    std::string writable;
    int logLevel;
    int network;
    int initRules;
    int error;
};

inline void PrintTo(const Settings& settings, std::ostream* stream) {
    *stream << "database " << settings.database << ", writable " << settings.writable << ", log " << settings.logLevel
            << ", network " << settings.network << ", init rules " << settings.initRules << ", error "
            << settings.error;
}

// The directories that the default context searches, as PROJ joins them.
inline std::string defaultSearchPath() { return proj_info().searchpath; }

inline void countMessage(void* messages, int /*level*/, const char* /*text*/) { ++*static_cast<int*>(messages); }

// The one PROJ directory of the program: the first that serves is settled for the process.
inline const std::string& projDirectory() {
    static const TemporaryDirectory directory;
    static const std::string& name = (writeProjDirectory(directory.name()), directory.name());
    return name;
}

// Everything that makes the library talk to PROJ, failures with it.
inline void useTheLibrary(const CrsConfig& config) {
    moved(config, "EPSG:4326", "EPSG:25832", {52, 9});
    moved(config, "EPSG:4314", "EPSG:3857", {50, 9});
    EXPECT_THROW(moved(config, "EPSG:4326", "EPSG:25832", {0, 99}), CoordinateTransformation::TransExecException);
    EXPECT_THROW(moved(config, "EPSG:9999", "EPSG:4326", {0, 0}), CoordinateTransformation::Misconfigured);
}

}  // namespace ProcessTest
