#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace CoordinateTransformation {

// A definition of an init file: its code, and its parameters without comments.
struct InitFileDefinition {
    std::string code;
    std::string text;
    std::size_t line;  // of the code, counted from 1
};

// The definitions in the text of an init file, in its order.
//
//   file       = { anything else | definition }
//   definition = "<" code ">" { text | comment } "<"
//   comment    = "#" up to the end of the line
//
// A code holds neither white space nor "<". The "<" that ends a definition begins the next one or "<>".
std::vector<InitFileDefinition> readInitFileText(const std::string& text);

}  // namespace CoordinateTransformation
