#include "text/QuotedCsv.h"

#include <algorithm>

namespace CoordinateTransformation {
namespace {

constexpr char QUOTE = '"';
constexpr char SEPARATOR = ',';
constexpr char ENDS_OF_PLAIN_CELLS[] = ",\"\r\n";

bool startsWith(std::string_view text, char c) { return !text.empty() && text.front() == c; }

bool isAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }

// The number of bytes after a leading byte, and the range of the first of them. The ranges exclude overlong forms,
// surrogates and values above U+10FFFF. For a byte that cannot lead, the number is 0.
struct Sequence {
    std::size_t following;
    unsigned char least;
    unsigned char greatest;
};

Sequence sequenceOf(unsigned char lead) {
    if (lead < 0xC2 || lead > 0xF4) return {0, 0, 0};
    if (lead < 0xE0) return {1, 0x80, 0xBF};
    if (lead == 0xE0) return {2, 0xA0, 0xBF};
    if (lead == 0xED) return {2, 0x80, 0x9F};
    if (lead < 0xF0) return {2, 0x80, 0xBF};
    if (lead == 0xF0) return {3, 0x90, 0xBF};
    return {3, 0x80, static_cast<unsigned char>(lead == 0xF4 ? 0x8F : 0xBF)};
}

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

bool isWellFormed(const Sequence& sequence, std::string_view following) {
    if (sequence.following == 0 || following.size() < sequence.following) return false;
    const auto first = static_cast<unsigned char>(following.front());
    following = following.substr(0, sequence.following);
    return first >= sequence.least && first <= sequence.greatest &&
           std::all_of(following.begin(), following.end(), isContinuation);
}

}  // namespace

bool isUtf8(std::string_view text) {
    const auto skipAscii = [&text] {
        text.remove_prefix(
            static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isAscii) - text.begin()));
    };
    for (skipAscii(); !text.empty(); skipAscii()) {
        const Sequence sequence = sequenceOf(static_cast<unsigned char>(text.front()));
        text.remove_prefix(1);
        if (!isWellFormed(sequence, text)) return false;
        text.remove_prefix(sequence.following);
    }
    return true;
}

bool QuotedCsv::readRecord(std::vector<std::string>& cells) {
    if (rest.empty() || !fault.empty()) return false;
    line = ++linesRead;
    std::size_t count = 0;
    do {
        if (count == limit) return refuse("a line has too many cells");
        if (cells.size() == count) cells.emplace_back();
        if (!readCell(cells[count++])) return false;
    } while (take(SEPARATOR));
    cells.resize(count);
    return endRecord();
}

bool QuotedCsv::readCell(std::string& cell) {
    cell.clear();
    if (!(take(QUOTE) ? readQuotedCell(cell) : readPlainCell(cell))) return false;
    if (cell.find('\0') != std::string::npos) return refuse("a cell has a NUL byte");
    return isUtf8(cell) || refuse("a cell is not UTF-8");
}

bool QuotedCsv::readPlainCell(std::string& cell) {
    cell = rest.substr(0, rest.find_first_of(ENDS_OF_PLAIN_CELLS));
    rest.remove_prefix(cell.size());
    return !startsWith(rest, QUOTE) || refuse("a quotation mark is inside a cell without quotes");
}

bool QuotedCsv::readQuotedCell(std::string& cell) {
    bool isDoubled = false;
    do {
        if (isDoubled) cell += QUOTE;
        const std::size_t end = rest.find(QUOTE);
        if (end == std::string_view::npos) return refuse("a quotation mark is not closed");
        cell += rest.substr(0, end);
        rest.remove_prefix(end + 1);
        isDoubled = take(QUOTE);
    } while (isDoubled);
    linesRead += static_cast<std::size_t>(std::count(cell.begin(), cell.end(), '\n'));
    return true;
}

bool QuotedCsv::endRecord() {
    if (rest.empty()) return true;
    if (startsWith(rest, '\r') && startsWith(rest.substr(1), '\n')) rest.remove_prefix(1);
    return take('\n') || refuse("a cell does not end at a comma or at the end of its line");
}

bool QuotedCsv::take(char expected) {
    if (!startsWith(rest, expected)) return false;
    rest.remove_prefix(1);
    return true;
}

bool QuotedCsv::refuse(const char* reason) {
    fault = reason;
    return false;
}

}  // namespace CoordinateTransformation
