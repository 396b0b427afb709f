#pragma once

#include <cstdlib>
#include <optional>
#include <string>

#include "proj/AxisOrderTable.h"
#include "proj/SettledCrsDescriptions.h"

// Makes the process forget its PROJ directory, at the start of a test and again at its end. In between, the environment
// variable is unset unless the test sets it with givenEnvironment().
class FreshProj4Settings {
public:
    FreshProj4Settings() {
        if (const char* const value = std::getenv(VARIABLE)) previous = value;
        unsetenv(VARIABLE);
        forget();
    }
    ~FreshProj4Settings() {
        if (previous)
            givenEnvironment(*previous);
        else
            unsetenv(VARIABLE);
        forget();
    }
    FreshProj4Settings(const FreshProj4Settings&) = delete;
    FreshProj4Settings& operator=(const FreshProj4Settings&) = delete;

    static void givenEnvironment(const std::string& directory) { setenv(VARIABLE, directory.c_str(), 1); }

private:
    static constexpr char VARIABLE[] = "QUARVELSRV_PROJ4_CONF_DIR";

    static void forget() {
        CoordinateTransformation::axisOrderTable.clear();
        CoordinateTransformation::searchPathSet = false;
        CoordinateTransformation::getSettledCrsDescriptions() = {};
    }

    std::optional<std::string> previous;
};
