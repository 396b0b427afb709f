#include "tools/crsctl/text/Printable.h"

#include <algorithm>

namespace crsctl {
namespace {

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

bool isControl(char byte) { return static_cast<unsigned char>(byte) < 0x20U || byte == 0x7F; }

void appendEscaped(std::string& out, char byte) {
    constexpr char DIGITS[] = "0123456789ABCDEF";
    const auto code = static_cast<unsigned char>(byte);
    if (byte == '\n') {
        out += "\\n";
    } else if (byte == '\t') {
        out += "\\t";
    } else if (byte == '\r') {
        out += "\\r";
    } else {
        out += {'\\', 'x', DIGITS[code >> 4U], DIGITS[code & 0x0FU]};
    }
}

// Never in the middle of a character.
std::string_view cut(std::string_view text, std::size_t limit) {
    while (limit > 0 && isContinuation(text[limit])) --limit;
    return text.substr(0, limit);
}

}  // namespace

std::string printable(std::string_view text, std::size_t limit) {
    const bool tooLong = text.size() > limit;
    std::string out;
    for (const char byte : tooLong ? cut(text, limit) : text) {
        if (isControl(byte))
            appendEscaped(out, byte);
        else
            out += byte;
    }
    return tooLong ? out + "..." : out;
}

std::size_t displayWidth(std::string_view text) {
    return text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isContinuation));
}

std::string padded(std::string_view text, std::size_t width) {
    const std::size_t taken = displayWidth(text);
    return std::string(text) + std::string(width > taken ? width - taken : 0, ' ');
}

}  // namespace crsctl
