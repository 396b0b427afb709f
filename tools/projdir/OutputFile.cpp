#include "tools/projdir/OutputFile.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace ProjDir {
namespace {

constexpr mode_t FILE_MODE = 0666;

[[noreturn]] void fail(const std::string& what, int error) {
    throw OutputError(what + ": " + std::generic_category().message(error));
}

// Closes on every path; close() is where some file systems report a full disk.
class Descriptor {
public:
    // `target` is the name for messages.
    Descriptor(const std::string& path, std::string target, int flags)
        : name(std::move(target)), number(open(path.c_str(), flags, FILE_MODE)) {
        if (number < 0) fail("cannot write \"" + name + "\"", errno);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number >= 0) ::close(number);
    }

    void write(const std::string& text) const {
        std::size_t done = 0;
        while (done < text.size()) {
            const ssize_t count = ::write(number, text.data() + done, text.size() - done);
            if (count < 0 && errno != EINTR) failToWrite();
            if (count > 0) done += static_cast<std::size_t>(count);
        }
    }
    void flushToDisk() const {
        if (fsync(number) != 0) failToWrite();
    }
    void close() {
        if (::close(std::exchange(number, -1)) != 0) failToWrite();
    }

private:
    [[noreturn]] void failToWrite() const { fail("cannot write \"" + name + "\"", errno); }

    std::string name;
    int number;
};

// Where a symbolic link leads, so that it is the file behind it that is replaced.
std::string followLinks(const std::string& path) {
    std::error_code error;
    const std::filesystem::path real = std::filesystem::canonical(path, error);
    return error ? path : real.string();
}

std::string temporaryNameOf(const std::string& target) { return target + ".tmp-" + std::to_string(getpid()); }

}  // namespace

BlockedSignals::BlockedSignals() {
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) sigaddset(&held, signal);
    pthread_sigmask(SIG_BLOCK, &held, &before);
}

BlockedSignals::~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }

OutputFile::OutputFile(const std::string& targetPath, bool mayOverwrite) : target(followLinks(targetPath)) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(target, error);
    if (std::filesystem::is_directory(status)) throw OutputError("\"" + targetPath + "\" is a directory");
    isDirect = std::filesystem::exists(status) && !std::filesystem::is_regular_file(status);
    if (std::filesystem::is_regular_file(status) && !mayOverwrite)
        throw OutputError("\"" + targetPath + "\" is there already; --force overwrites it");
}

OutputFile::~OutputFile() {
    if (!temporary.empty()) unlink(temporary.c_str());
}

void OutputFile::probe() const {
    if (isDirect) return;
    const std::string probed = temporaryNameOf(target);
    Descriptor(probed, target, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC).close();
    unlink(probed.c_str());
}

void OutputFile::write(const std::string& text) {
    if (isDirect) {
        directText = text;
        return;
    }
    Descriptor file(temporaryNameOf(target), target, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC);
    temporary = temporaryNameOf(target);
    file.write(text);
    file.flushToDisk();
    file.close();
}

void OutputFile::publish() {
    if (isDirect) return writeStream(directText);
    if (std::rename(temporary.c_str(), target.c_str()) != 0) fail("cannot write \"" + target + "\"", errno);
    temporary.clear();
}

void OutputFile::writeStream(const std::string& text) const {
    Descriptor stream(target, target, O_WRONLY | O_CLOEXEC);
    stream.write(text);
    stream.close();
}

OutputDirectory::OutputDirectory(std::string directoryPath) : path(std::move(directoryPath)) {
    std::error_code error;
    isMade = std::filesystem::create_directory(path, error);
    if (error) throw OutputError("cannot create directory \"" + path + "\": " + error.message());
}

OutputDirectory::~OutputDirectory() {
    if (isMade) rmdir(path.c_str());
}

std::string OutputDirectory::file(const std::string& name) const {
    return (std::filesystem::path(path) / name).string();
}

}  // namespace ProjDir
