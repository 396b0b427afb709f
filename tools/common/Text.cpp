#include "tools/common/Text.h"

#include <algorithm>
#include <numeric>

namespace Tools {
namespace {

constexpr char GAP[] = "  ";

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

bool isControl(char byte) { return static_cast<unsigned char>(byte) < 0x20U || byte == 0x7F; }

std::string escaped(char byte) {
    constexpr char DIGITS[] = "0123456789ABCDEF";
    if (byte == '\n') return "\\n";
    if (byte == '\t') return "\\t";
    if (byte == '\r') return "\\r";
    const auto code = static_cast<unsigned char>(byte);
    return {'\\', 'x', DIGITS[code >> 4U], DIGITS[code & 0x0FU]};
}

// Returns the columns of `text` on a terminal: one for each character of UTF-8.
std::size_t displayWidth(std::string_view text) {
    return text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isContinuation));
}

char smallLetter(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

std::vector<std::size_t> columnWidths(const TableRows& rows) {
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], displayWidth(row[i]));
    }
    return widths;
}

// Returns at most `limit` bytes of `text`. Does not cut inside a character of UTF-8.
std::string_view cut(std::string_view text, std::size_t limit) {
    while (limit > 0 && isContinuation(text[limit])) --limit;
    return text.substr(0, limit);
}

}  // namespace

std::string printable(std::string_view text, std::size_t limit) {
    const bool tooLong = text.size() > limit;
    std::string out;
    for (const char byte : tooLong ? cut(text, limit) : text)
        out += isControl(byte) ? escaped(byte) : std::string(1, byte);
    return tooLong ? out + "..." : out;
}

std::string grouped(std::uint64_t number) {
    std::string digits = std::to_string(number);
    for (std::size_t position = digits.size(); position > 3;) digits.insert(position -= 3, 1, ',');
    return digits;
}

std::string padded(std::string_view text, std::size_t width) {
    const std::size_t taken = displayWidth(text);
    return std::string(text) + std::string(width > taken ? width - taken : 0, ' ');
}

std::string alignedColumns(const TableRows& rows, const std::string& indent) {
    const std::vector<std::size_t> widths = columnWidths(rows);
    std::string text;
    for (const auto& row : rows) {
        std::string line = indent;
        for (std::size_t i = 0; i < row.size(); ++i) line += padded(row[i], widths[i]) + GAP;
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}

std::string smallLetters(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), smallLetter);
    return text;
}

std::size_t editDistance(std::string_view left, std::string_view right) {
    // The distances between the first i characters of `left` and each beginning of `right`.
    std::vector<std::size_t> distances(right.size() + 1);
    std::iota(distances.begin(), distances.end(), std::size_t{0});
    for (std::size_t i = 0; i < left.size(); ++i) {
        std::size_t diagonal = distances[0]++;
        for (std::size_t j = 0; j < right.size(); ++j) {
            const std::size_t replaced = diagonal + (smallLetter(left[i]) == smallLetter(right[j]) ? 0 : 1);
            diagonal = distances[j + 1];
            distances[j + 1] = std::min({replaced, diagonal + 1, distances[j] + 1});
        }
    }
    return distances.back();
}

std::optional<std::string> closest(std::string_view word, const std::vector<std::string>& known) {
    const auto distance = [word](const std::string& candidate) { return editDistance(word, candidate); };
    const auto best = std::min_element(known.begin(), known.end(), [distance](const auto& left, const auto& right) {
        return distance(left) < distance(right);
    });
    if (best == known.end() || distance(*best) > std::max(std::size_t{1}, word.size() / 3)) return std::nullopt;
    return *best;
}

}  // namespace Tools
