#include "tools/crsctl/start/TextFile.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "config/Fragment.h"
#include "tools/crsctl/start/Failures.h"

namespace crsctl {
namespace {

[[noreturn]] void failFor(const std::string& path) { throw SetUpError(inputName(path) + ": " + std::strerror(errno)); }

std::string readDescriptor(int descriptor, const std::string& path) {
    std::string content;
    std::array<char, 65536> block{};
    for (;;) {
        const ssize_t count = read(descriptor, block.data(), block.size());
        if (count > 0) content.append(block.data(), static_cast<std::size_t>(count));
        if (count == 0 || content.size() > CoordinateTransformation::LARGEST_FRAGMENT) return content;
        if (count < 0 && errno != EINTR) failFor(path);
    }
}

class InputDescriptor {
public:
    explicit InputDescriptor(const std::string& path) : descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (descriptor < 0) failFor(path);
    }
    ~InputDescriptor() { close(descriptor); }
    InputDescriptor(const InputDescriptor&) = delete;
    InputDescriptor& operator=(const InputDescriptor&) = delete;

    const int descriptor;
};

}  // namespace

std::string inputName(const std::string& path) { return path == "-" ? STANDARD_INPUT : path; }

std::string readTextFile(const std::string& path) {
    if (path == "-") return readDescriptor(STDIN_FILENO, path);
    const InputDescriptor file(path);
    return readDescriptor(file.descriptor, path);
}

}  // namespace crsctl
