#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "QSHelpers/NumericText.h"

namespace QSHelpers {

// All conversions between numbers and text. They use neither shared state nor the locale.

// Reads a text that is a number as a whole; T is unsigned int or double.
//
//   text     = lead body { " " }
//   lead     = { " " } [ sign ] { " " }
//   body     = digits and at most one separator [ ("E" | "e") [ sign ] digits ]
//   sign     = "+" | "-",  separator = "." | ","
//
// `rejectNegative` refuses "-"; `integerOnly` refuses separator and exponent. For any other text, and for digits or a
// double out of range, throws ConversionError with the text in its message.
//
// The value is sign * mantissa * pow(10, n), where all digits form the mantissa: 0.3 is 3 * pow(10, -1). For unsigned
// int the power is truncated to an integer and then the product to 32 bits: 1.5 is 0, and -5 wraps.
template <typename T>
T convertTextToNumeric(const std::string& text, bool rejectNegative, bool integerOnly);

extern template unsigned int convertTextToNumeric<unsigned int>(const std::string& text, bool rejectNegative,
                                                                bool integerOnly);
extern template double convertTextToNumeric<double>(const std::string& text, bool rejectNegative, bool integerOnly);

enum TrimMode { TRIM_LEFT = 0, TRIM_RIGHT = 1, TRIM_BOTH = 2 };

// Removes carriage returns, line feeds, tabs and blanks at the chosen ends.
std::string trimWhitespace(const std::string& text, TrimMode mode);

}  // namespace QSHelpers

namespace CoordinateTransformation {

// Numbers of definitions: correctly rounded and independent of the locale, also with a standard library that lacks
// std::from_chars for double.

// The number at the beginning of `text`; 0 if there is none. The result is not finite for a number that is too large
// and for "nan" and "inf".
//
//   number = [ "+" | "-" ] ( digits [ "." [ digits ] ] | "." digits ) [ ( "e" | "E" ) [ "+" | "-" ] digits ]
double readDouble(std::string_view text);

// Reads the number at the beginning of `text` and removes it. If there is none, returns nothing and leaves `text`
// unchanged.
std::optional<double> takeDouble(std::string_view& text);

// The shortest text that reads back as `number`: "6378137", "0.1", "1e-07".
//
// REQUIRES: the number is finite.
std::string writeDouble(double number);

}  // namespace CoordinateTransformation
