#include "tools/crsctl/start/Descriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace crsctl {

void occupyStandardDescriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(descriptor, F_GETFD) < 0) open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

WriteOutcome writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(descriptor, text.data(), text.size());
        if (count >= 0) text.remove_prefix(static_cast<std::size_t>(count));
        if (count < 0 && errno == EPIPE) return WriteOutcome::PIPE_CLOSED;
        if (count < 0 && errno != EINTR) return WriteOutcome::FAILED;
    }
    return WriteOutcome::WRITTEN;
}

}  // namespace crsctl
