#pragma once

#include <csignal>
#include <stdexcept>
#include <string>

namespace ProjDir {

// A file or directory that cannot be written; what() names it and the system's reason.
class OutputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Holds back the signals that end a program, on the thread that makes it, until it goes: for as long as there are
// files that must not stay behind. Those that came meanwhile are delivered then.
class BlockedSignals {
public:
    BlockedSignals();
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;
    ~BlockedSignals();

private:
    sigset_t before{};
};

// A file that comes into being whole or not at all: its text goes to another name beside it, on the disk before
// `publish` gives it its own. Nothing is left of a file that is not published.
//
// `publish` writes directly to a target such as a terminal or a pipe, which is not a regular file. It writes to the
// file behind a symbolic link.
class OutputFile {
public:
    // OutputError when the target is there already and must not be overwritten, or is a directory.
    OutputFile(const std::string& targetPath, bool mayOverwrite);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    // Finds out whether the directory lets itself be written to, before much work is done.
    void probe() const;
    // May be called once. OutputError when the text does not fit.
    void write(const std::string& text);
    // REQUIRES: written.
    void publish();
    // A terminal, a pipe or the like, which may keep `publish` waiting.
    bool isStream() const { return isDirect; }

private:
    void writeStream(const std::string& text) const;

    std::string target;
    std::string temporary;
    std::string directText;
    bool isDirect = false;
};

// A directory for output files: made when it is not there, and then removed again unless it is kept.
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
