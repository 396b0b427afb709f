#include "text/FileText.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <ios>
#include <system_error>

#include "platform/ErrnoGuard.h"

namespace CoordinateTransformation {

std::string readUpTo(std::streambuf& source, std::size_t limit) {
    std::string text;
    std::array<char, 65536> block{};
    while (text.size() < limit) {
        const auto wanted = static_cast<std::streamsize>(std::min(block.size(), limit - text.size()));
        const std::streamsize count = source.sgetn(block.data(), wanted);
        if (count <= 0) break;
        text.append(block.data(), static_cast<std::size_t>(count));
    }
    return text;
}

FileText readToEnd(std::streambuf& file) {
    FileText read;
    try {
        read.content = readUpTo(file, LARGEST_FILE + 1);
    } catch (const std::ios_base::failure& brokenOff) {
        return {"", brokenOff.code().message(), true};
    }
    if (read.content.size() > LARGEST_FILE) return {"", "it is larger than 256 MB", true};
    return read;
}

FileText readFile(const std::string& path) {
    const ErrnoGuard errnoGuard;
    std::filebuf file;
    errno = 0;
    if (file.open(path, std::ios::in | std::ios::binary) == nullptr)
        return {"", std::generic_category().message(errno), false};
    return readToEnd(file);
}

}  // namespace CoordinateTransformation
