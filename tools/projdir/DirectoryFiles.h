#pragma once

#include <csignal>
#include <stdexcept>
#include <string>
#include <vector>

#include "text/InitFile.h"
#include "tools/projdir/Definition.h"

namespace ProjDir {

using CoordinateTransformation::AXIS_ORDER_FILE;
using CoordinateTransformation::DESCRIPTION_FILE;
using CoordinateTransformation::INIT_FILE;

// A file cannot be read, written or used; what() names it, and the line or the system's reason.
class FileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The whole content of a file. FileError if it cannot be read.
std::string readText(const std::string& path);

// The list of the grid files that definitions name; only with grids.
constexpr char GRIDS_FILE[] = "epsg-grids.csv";

// The content of "epsg": a head, the entry of code 0, then the definitions in the order of the outcomes. `maker` is the
// program with its options, as describeOptions writes it; if it is empty, there is no line for it.
std::string writeInitFile(const RegistryVersion& version, const std::vector<CrsOutcome>& outcomes,
                          const std::string& maker = "");

// The content of "epsg-axisorder.csv": one line for each entry of "epsg".
std::string writeAxisOrderFile(const std::vector<CrsOutcome>& outcomes);

// The content of "epsg-info.csv": comma-separated values (RFC 4180) with a head, and one line for each entry of "epsg"
// except code 0.
std::string writeDescriptionFile(const std::vector<CrsOutcome>& outcomes);

// A grid file that definitions name.
struct GridFile {
    std::string name;
    // Lower-case hexadecimal; empty if the file is not installed.
    std::string sha256;
};

// The grid files of the definitions, each once, sorted by name. FileError if an installed one cannot be read.
std::vector<GridFile> listGridFiles(const ProjContext& installed, const std::vector<CrsOutcome>& outcomes);

// The content of "epsg-grids.csv".
std::string writeGridFiles(const std::vector<GridFile>& files);

// One line for each file that is not installed.
std::string writeMissingGrids(const std::vector<GridFile>& files);

// FileError if the file cannot be read.
std::string computeSha256(const std::string& path);

// A code with its place in a list, for messages.
struct ListedCode {
    unsigned int code = 0;
    std::string place;
};

// The codes of a text with one per line, with or without "EPSG:". Empty lines, surrounding blanks and comments from "#"
// to the end of the line are ignored. `name` is that of the file, for messages.
std::vector<ListedCode> readCodeList(const std::string& text, const std::string& name);

// The codes of a configuration fragment, as the library reads it; of a compound the first one. `name` is that of the
// file, for messages.
std::vector<ListedCode> readConfigurationCodes(const std::string& fragment, const std::string& name);

// FileError for a code that the registry does not have, and for a deprecated one unless they are admitted.
void requireListed(const std::vector<RegistryCrs>& registry, const std::vector<ListedCode>& codes,
                   bool includeDeprecated);

// The CRS of the list with one of the codes, in the order of the list.
std::vector<RegistryCrs> selectListed(const std::vector<RegistryCrs>& list, const std::vector<ListedCode>& codes);

// Blocks the signals that end a program, in the thread that makes it, while files exist that must not remain. Signals
// that arrive meanwhile are delivered afterwards.
class BlockedSignals {
public:
    BlockedSignals();
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;
    ~BlockedSignals();

private:
    sigset_t before{};
};

// A file that is written whole or not at all: the text goes to a temporary file beside it, which `publish` renames. A
// file that is not published leaves nothing behind.
//
// A target that is not a regular file, such as a terminal or a pipe, is written directly by `publish`. A symbolic link
// is followed.
class OutputFile {
public:
    // FileError if the target exists and must not be overwritten, or is a directory.
    OutputFile(const std::string& targetPath, bool mayOverwrite);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    // FileError if the directory is not writable. It serves to fail before long work.
    void probe() const;
    // May be called once. FileError if the text cannot be written.
    void write(const std::string& text);
    // REQUIRES: written.
    void publish();
    // Whether the target is a terminal, a pipe or the like, for which `publish` may have to wait.
    bool isStream() const { return isDirect; }

private:
    std::string target;
    std::string temporary;
    std::string directText;
    bool isDirect = false;
};

// A directory for output files. It is created if it does not exist, and then removed again unless it is kept.
class OutputDirectory {
public:
    explicit OutputDirectory(std::string directoryPath);
    OutputDirectory(const OutputDirectory&) = delete;
    OutputDirectory& operator=(const OutputDirectory&) = delete;
    ~OutputDirectory();

    std::string file(const std::string& name) const;
    void keep() { isMade = false; }

private:
    std::string path;
    bool isMade = false;
};

}  // namespace ProjDir
