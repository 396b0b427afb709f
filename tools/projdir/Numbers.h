#pragma once

#include <charconv>
#include <string>

namespace ProjDir {

// The shortest text that reads back as `number`, whatever the locale.
inline std::string writeNumber(double number) {
    char text[32];
    return std::string(text, std::to_chars(text, text + sizeof(text), number).ptr);
}

// `number` with a fixed count of decimals, whatever the locale.
inline std::string writeFixed(double number, int decimals) {
    char text[400];
    return std::string(text, std::to_chars(text, text + sizeof(text), number, std::chars_format::fixed, decimals).ptr);
}

// The number that `text` begins with; `otherwise` when it begins with none.
inline double readNumber(const std::string& text, double otherwise = 0) {
    double number = otherwise;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

}  // namespace ProjDir
