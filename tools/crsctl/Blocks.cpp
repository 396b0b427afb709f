#include "tools/crsctl/Blocks.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "tools/common/Process.h"
#include "tools/crsctl/Session.h"

namespace crsctl {
namespace {

[[noreturn]] void fail(const std::string& name, int error) { throw SetUpError(name + ": " + std::strerror(error)); }

// Returns the unread bytes of an input if it is a regular file, otherwise nothing. Throws SetUpError with the system's
// reason unless the input exists and is readable.
std::optional<std::uint64_t> bytesLeft(const std::string& path) {
    const bool standard = path == "-";
    struct stat status {};
    if ((standard ? fstat(STDIN_FILENO, &status) : stat(path.c_str(), &status)) != 0) fail(inputName(path), errno);
    if (S_ISDIR(status.st_mode)) fail(inputName(path), EISDIR);
    if (!standard && access(path.c_str(), R_OK) != 0) fail(inputName(path), errno);
    if (!S_ISREG(status.st_mode)) return std::nullopt;
    // Another process may have read a part of standard input.
    const off_t offset = standard ? std::max(off_t{0}, lseek(STDIN_FILENO, 0, SEEK_CUR)) : 0;
    return static_cast<std::uint64_t>(std::max(off_t{0}, status.st_size - offset));
}

constexpr std::size_t READ_SIZE = std::size_t{1} << 16U;
// A report shows this many bytes of a line that is too long.
constexpr std::size_t EXCERPT_SIZE = 256;
constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";

}  // namespace

// An open input.
class BlockReader::Input {
public:
    // Throws SetUpError if the input cannot be opened.
    explicit Input(const std::string& path)
        : name(inputName(path)), descriptor(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (descriptor < 0) fail(name, errno);
        struct stat status {};
        isRegular = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    }
    ~Input() {
        if (descriptor != STDIN_FILENO) close(descriptor);
    }
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    // Appends bytes as soon as there are any. Returns their number, 0 at the end, or nothing if a signal
    // asks the program to finish. Throws SetUpError if reading fails.
    std::optional<std::size_t> appendTo(std::string& out) {
        for (;;) {
            if (!isRegular) Tools::waitForInput(descriptor);
            if (Tools::finishingSignal() != 0) return std::nullopt;
            const ssize_t count = read(descriptor, buffer.data(), buffer.size());
            if (count < 0 && errno != EINTR && errno != EAGAIN) fail(name, errno);
            if (count < 0) continue;
            out.append(buffer.data(), static_cast<std::size_t>(count));
            return static_cast<std::size_t>(count);
        }
    }

private:
    std::string name;
    int descriptor;
    bool isRegular;
    std::array<char, READ_SIZE> buffer;
};

BlockReader::BlockReader(const std::vector<std::string>& inputs, bool headers) : paths(inputs), hasHeaders(headers) {
    for (const std::string& path : paths) {
        const std::optional<std::uint64_t> size = bytesLeft(path);
        totalBytes = size && totalBytes ? std::optional(*totalBytes + *size) : std::nullopt;
    }
}

BlockReader::BlockReader(const std::string& lines)
    : paths(1), hasHeaders(false), totalBytes(lines.size()), ended(true), text(lines), whole(lines.size()) {}

std::string BlockReader::header() {
    while (hasHeaders && place == Place::INPUT && !ended && fill()) continue;
    return firstHeader;
}

std::optional<Block> BlockReader::next() {
    while (current < paths.size()) {
        if (whole > 0) return takeLines();
        if (!ended && !fill()) return std::nullopt;
        if (!ended || whole > 0) continue;
        ++current;
        input.reset();
        ended = false;
        place = Place::INPUT;
        lineNumber = 1;
    }
    return std::nullopt;
}

// Returns false if a signal asks the program to finish.
bool BlockReader::fill() {
    if (input == nullptr) input = std::make_shared<Input>(paths[current]);
    const std::size_t before = text.size();
    const std::optional<std::size_t> count = input->appendTo(text);
    if (!count) return false;
    ended = *count == 0;
    const std::size_t lineEnd = std::string_view(text).substr(before).rfind('\n');
    if (lineEnd != std::string_view::npos)
        whole = before + lineEnd + 1;
    else if (ended || text.size() > LONGEST_LINE)
        whole = text.size();
    if (whole > 0) dropBeginning();
    return true;
}

// Drops the byte-order mark and the header of an input, and the rest of a line that is too long.
void BlockReader::dropBeginning() {
    if (place == Place::OVERLONG_LINE) dropLine();
    if (place != Place::INPUT) return;
    if (text.compare(0, BYTE_ORDER_MARK.size(), BYTE_ORDER_MARK) == 0) cut(BYTE_ORDER_MARK.size());
    place = Place::LINE;
    if (!hasHeaders) return;
    std::string header = dropLine();
    if (place == Place::OVERLONG_LINE) throw SetUpError(inputName(paths[current]) + ":1: the header is too long");
    if (!header.empty() && header.back() == '\r') header.pop_back();
    if (current == 0) firstHeader = header;
}

// Drops a line, or a part of a line that is too long. Returns it without its line end.
std::string BlockReader::dropLine() {
    const std::size_t lineEnd = text.find('\n');
    const bool hasEnd = lineEnd != std::string::npos;
    place = hasEnd || ended ? Place::LINE : Place::OVERLONG_LINE;
    lineNumber += hasEnd ? 1 : 0;
    std::string line = cut(hasEnd ? lineEnd + 1 : whole);
    if (hasEnd) line.pop_back();
    return line;
}

Block BlockReader::takeLines() {
    Block block;
    block.tooLong = !ended && text[whole - 1] != '\n';
    block.lines = cut(whole);
    block.firstLine = lineNumber;
    block.input = current;
    block.number = blockCount++;
    block.end = consumedBytes;
    lineNumber += static_cast<std::uint64_t>(std::count(block.lines.begin(), block.lines.end(), '\n'));
    if (!block.tooLong) return block;
    block.lines = block.lines.substr(0, EXCERPT_SIZE);
    place = Place::OVERLONG_LINE;
    return block;
}

// Removes the first bytes of the text and returns them.
std::string BlockReader::cut(std::size_t size) {
    std::string rest = text.substr(size);
    text.resize(size);
    std::swap(text, rest);
    whole -= size;
    consumedBytes += size;
    return rest;
}

}  // namespace crsctl
