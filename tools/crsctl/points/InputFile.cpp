#include "tools/crsctl/points/InputFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tools/common/Process.h"
#include "tools/crsctl/start/Failures.h"
#include "tools/crsctl/start/TextFile.h"

namespace crsctl {

using Tools::hasInput;
using Tools::signalToFinish;
using Tools::waitForInput;

namespace {

[[noreturn]] void fail(const std::string& name, int error) { throw SetUpError(name + ": " + std::strerror(error)); }

bool isRegular(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

int openForReading(const std::string& path) {
    const int descriptor = path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const int error = errno;
    if (descriptor < 0) fail(inputName(path), error);
    return descriptor;
}

// Of standard input somebody else may have read a part.
std::uint64_t bytesLeft(const std::string& path, const struct stat& status) {
    const auto size = static_cast<std::uint64_t>(status.st_size);
    const off_t offset = path == "-" ? lseek(STDIN_FILENO, 0, SEEK_CUR) : 0;
    const auto behind = offset > 0 ? static_cast<std::uint64_t>(offset) : 0;
    return size > behind ? size - behind : 0;
}

}  // namespace

std::optional<std::uint64_t> requireReadable(const std::string& path) {
    const bool standard = path == "-";
    const std::string name = inputName(path);
    struct stat status {};
    if ((standard ? fstat(STDIN_FILENO, &status) : stat(path.c_str(), &status)) != 0) fail(name, errno);
    if (S_ISDIR(status.st_mode)) fail(name, EISDIR);
    if (!standard && access(path.c_str(), R_OK) != 0) fail(name, errno);
    if (!S_ISREG(status.st_mode)) return std::nullopt;
    return bytesLeft(path, status);
}

InputFile::InputFile(const std::string& path)
    : name(inputName(path)), descriptor(openForReading(path)), regular(isRegular(descriptor)) {}

InputFile::~InputFile() {
    if (descriptor != STDIN_FILENO) close(descriptor);
}

std::optional<std::size_t> InputFile::read(char* to, std::size_t size) {
    for (;;) {
        if (!regular) wait();
        if (signalToFinish() != 0) return std::nullopt;
        const ssize_t count = ::read(descriptor, to, size);
        if (count >= 0) return static_cast<std::size_t>(count);
        if (errno != EINTR && errno != EAGAIN) fail(name, errno);
    }
}

bool InputFile::mustWait() const { return !regular && signalToFinish() == 0 && !hasInput(descriptor); }

void InputFile::wait() const { waitForInput(descriptor); }

}  // namespace crsctl
