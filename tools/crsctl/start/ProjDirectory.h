#pragma once

#include <string>

namespace crsctl {

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

// The choice as it stands for this process.
ProjDirectoryChoice projDirectoryChoice(const std::string& option);

}  // namespace crsctl
