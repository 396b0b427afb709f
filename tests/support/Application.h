#pragma once

#include <string>

#include <gtest/gtest.h>

#include "proj/classic/ProjHandles.h"
#include "tests/support/ProcessServer.h"
#include "tests/support/TemporaryDirectory.h"

// An application that uses PROJ itself, next to the library.
namespace ProcessTest {

using ClassicProj::ProjPtr;
using TestSupport::TemporaryDirectory;

// The settings of a context, as PROJ reports them. Null is the default context of the process.
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

// The search path of the default context, as PROJ joins it.
inline std::string defaultSearchPath() { return proj_info().searchpath; }

inline void countMessage(void* messages, int /*level*/, const char* /*text*/) { ++*static_cast<int*>(messages); }

// The PROJ directory of the program. There is only one, because a process keeps the first that it starts with.
inline const std::string& projDirectory() {
    static const TemporaryDirectory directory;
    static const std::string& name = (writeProjDirectory(directory.name()), directory.name());
    return name;
}

// Transforms points with and without a grid, and provokes failures with a bad point and an unknown code.
inline void useTheLibrary(const CrsConfig& config) {
    moved(config, "EPSG:4326", "EPSG:25832", {52, 9});
    moved(config, "EPSG:4314", "EPSG:3857", {50, 9});
    EXPECT_THROW(moved(config, "EPSG:4326", "EPSG:25832", {0, 99}), CoordinateTransformation::TransExecException);
    EXPECT_THROW(moved(config, "EPSG:9999", "EPSG:4326", {0, 0}), CoordinateTransformation::Misconfigured);
}

}  // namespace ProcessTest
