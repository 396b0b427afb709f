#pragma once

#include <cstdlib>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace Fuzz {

// A file in memory that is rewritten for each input.
class ScratchFile {
public:
    ScratchFile() : descriptor(memfd_create("fuzz", 0)), path("/proc/self/fd/" + std::to_string(descriptor)) {
        if (descriptor < 0) std::abort();
    }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    ~ScratchFile() { close(descriptor); }

    // Replaces the content of the file and returns its path.
    const std::string& holding(const std::string& text) const {
        if (ftruncate(descriptor, 0) != 0 || pwrite(descriptor, text.data(), text.size(), 0) < 0) std::abort();
        return path;
    }

private:
    int descriptor;
    std::string path;
};

}  // namespace Fuzz
