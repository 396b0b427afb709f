#pragma once

#include <algorithm>
#include <string>

namespace ProjDir {

// A text as it stands within one line. Names and reasons come out of the database and may hold anything: control
// characters become blanks, so that none of them ends a line or a comment, or moves a terminal's cursor.
inline std::string toOneLine(std::string text) {
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20U || c == 0x7F; };
    std::replace_if(text.begin(), text.end(), isControl, ' ');
    return text;
}

// The text as a line of its own.
inline std::string writeLine(const std::string& text) { return toOneLine(text) + "\n"; }

// Whether the text, between "<code>" and "<>", is a definition that nothing in it ends early.
inline bool isWholeDefinition(const std::string& text) {
    return text.find_first_of("<>#") == std::string::npos && toOneLine(text) == text;
}

}  // namespace ProjDir
