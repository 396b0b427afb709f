#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>
#include <vector>

namespace crsctl {

// Bytes on their way out, appended without an allocation once the buffer has found its size.
class OutputBuffer {
public:
    // Room for `size` bytes behind what is there; what was written there counts after commit().
    char* reserve(std::size_t size) {
        if (bytes.size() - used < size) bytes.resize(2 * bytes.size() + size);
        return bytes.data() + used;
    }
    void commit(const char* end) { used = static_cast<std::size_t>(end - bytes.data()); }

    void append(std::string_view text) {
        if (text.empty()) return;
        std::memcpy(reserve(text.size()), text.data(), text.size());
        used += text.size();
    }
    void append(char character) {
        *reserve(1) = character;
        ++used;
    }

    std::string_view view() const { return {bytes.data(), used}; }
    void clear() { used = 0; }

private:
    std::vector<char> bytes;
    std::size_t used = 0;
};

}  // namespace crsctl
