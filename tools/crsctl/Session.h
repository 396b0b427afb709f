#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "CoordinateTransformation/Crs.h"
#include "CoordinateTransformation/CrsConfig.h"
#include "CoordinateTransformation/CrsCreator.h"

namespace crsctl {

// The exit codes of the program.
constexpr int EXIT_DONE = 0;
constexpr int EXIT_REFUSED = 1;
constexpr int EXIT_SET_UP = 2;
constexpr int EXIT_INTERRUPTED = 130;

// A failure that ends the command. It has an exit code and a message of one line that names the input.
class CommandFailure : public std::runtime_error {
public:
    CommandFailure(int code, const std::string& text) : std::runtime_error(text), exitCode(code) {}
    int getExitCode() const { return exitCode; }

private:
    int exitCode;
};

// The server would refuse the input.
class InputRefused : public CommandFailure {
public:
    explicit InputRefused(const std::string& text) : CommandFailure(EXIT_REFUSED, text) {}
};

// Wrong usage, a file that cannot be read, a library that does not start.
class SetUpError : public CommandFailure {
public:
    explicit SetUpError(const std::string& text) : CommandFailure(EXIT_SET_UP, text) {}
};

// The name of "-" in messages.
constexpr char STANDARD_INPUT[] = "standard input";

// The name of the file `path` in messages.
std::string inputName(const std::string& path);

// Returns the content of the file `path`, or of standard input for "-". Stops reading beyond MAX_FRAGMENT_SIZE bytes.
// Throws SetUpError with the system's reason.
std::string readTextFile(const std::string& path);

// The possible sources of the PROJ directory.
struct ProjDirectoryChoice {
    std::string option;          // the value of --proj-dir; empty if it is not given
    std::string environment;     // the environment variable; empty if it is not set
    bool builtInExists = false;  // whether the library's default directory exists
    std::string installed;       // the directory that was installed with the library; empty if there is none
};

// Returns the PROJ directory: the first of these sources that exists, in their order.
std::string chosenProjDirectory(const ProjDirectoryChoice& choice);

// Returns the PROJ directory for the value of --proj-dir and the environment of this process.
std::string projDirectory(const std::string& option);

// The options of every command.
struct CommonOptions {
    std::string configFile;               // empty: not given
    std::string projDir;                  // empty: not given
    std::vector<std::string> properties;  // of the configuration, as KEY=VALUE
    bool json = false;
    bool quiet = false;  // no progress, summary or hints
};

// Starts the library with its PROJ directory and properties, and without any entry. Throws SetUpError if it does not
// start.
std::unique_ptr<CoordinateTransformation::CrsConfig> startWithoutEntries(const CommonOptions& options);

// Returns whether the text is one of the OGC names of WGS 84 with the longitude first. The library knows these names
// only if a configuration maps them.
bool isCrs84(const std::string& name);

// The library, started as a server starts it: with the configuration of `options`, or without any entry. The
// constructor throws SetUpError, which names the file or directory, if the library does not start.
class Session {
public:
    explicit Session(const CommonOptions& options);

    const CoordinateTransformation::CrsConfig& config() const { return *crsConfig; }
    const CoordinateTransformation::CrsCreator& creator() const { return crsConfig->getCreator(); }
    // Returns whether there is a configuration. Only a configuration shows which CRS the server offers.
    bool isConfigured() const { return configured; }

    // Calls CrsCreator::createFromName. With a configuration, the CRS must be offered. Without one, the names of
    // isCrs84 mean WGS 84 with the longitude first.
    CoordinateTransformation::Crs createFromName(const std::string& name, bool throwIfMissing) const;

private:
    std::unique_ptr<CoordinateTransformation::CrsConfig> crsConfig;
    bool configured;
};

}  // namespace crsctl
