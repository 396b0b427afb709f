#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include "CoordinateTransformation/Crs.h"
#include "CoordinateTransformation/CrsConfig.h"
#include "CoordinateTransformation/CrsCreator.h"

namespace crsctl {

// The exit codes of the program.
constexpr int EXIT_DONE = 0;
constexpr int EXIT_REFUSED = 1;
constexpr int EXIT_SET_UP = 2;
constexpr int EXIT_INTERRUPTED = 130;

// A failure that ends the command: one line of text that names the input, and the exit code.
class CommandFailure : public std::runtime_error {
public:
    CommandFailure(int code, const std::string& text) : std::runtime_error(text), exitCode(code) {}
    int getExitCode() const { return exitCode; }

private:
    int exitCode;
};

// The server would have refused the input.
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

// The whole content of the file `path`, of standard input for "-"; of a text beyond any fragment as much as shows that.
// SetUpError with the system's reason.
std::string readTextFile(const std::string& path);

// Where the PROJ directory may come from.
struct ProjDirectoryChoice {
    std::string option;          // --proj-dir, empty when not given
    std::string environment;     // the environment variable, empty when not set
    bool builtInExists = false;  // the library's own directory is there
    std::string installed;       // the directory that was installed with the library
};

// What to set the library's property to. Empty where the library finds the directory by itself: through the
// environment, or its built-in directory.
std::string projDirectoryProperty(const ProjDirectoryChoice& choice);

// The directory itself.
std::string projDirectory(const ProjDirectoryChoice& choice);

// The choice of this process.
ProjDirectoryChoice projDirectoryChoice(const std::string& option);

// The options of every command.
struct CommonOptions {
    std::string configFile;  // empty: not given
    std::string projDir;     // empty: not given
    bool json = false;
    bool quiet = false;  // no progress, summary or hints
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
