#pragma once

#include <string>
#include <string_view>

namespace ClassicProj {

// The numbers of definitions, correctly rounded and the same in every locale, also where the standard library has
// no std::from_chars for double.

// The number that `text` begins with; 0 for a text that begins with none. Not finite when it is too large or spelt
// "nan" or "inf".
//
//   number = [ "+" | "-" ] ( digits [ "." [ digits ] ] | "." digits ) [ ( "e" | "E" ) [ "+" | "-" ] digits ]
double readNumber(std::string_view text);

// In 15 digits, or in 16 or 17 where it takes them to be read back as the same number.
//
// REQUIRES: the number is finite.
std::string writeNumber(double number);

}  // namespace ClassicProj
