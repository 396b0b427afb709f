#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "QSHelpers/NumericText.h"

namespace QSHelpers {

// The only conversions between numbers and text. Free of shared state and of the locale.

// Reads a text that is a number as a whole; T is unsigned int or double.
//
//   text     = lead body { " " }
//   lead     = { " " } [ sign ] { " " }
//   body     = digits and at most one separator [ ("E" | "e") [ sign ] digits ]
//   sign     = "+" | "-",  separator = "." | ","
//
// `rejectNegative` refuses "-"; `integerOnly` refuses separator and exponent. ConversionError, with the text
// in its message, for everything else and for digits or a double that do not fit.
//
// The value is sign * mantissa * pow(10, n), the mantissa being all the digits: 0.3 is 3 * pow(10, -1). For
// unsigned int the power is first cut to an integer and the product to 32 bits: 1.5 is 0, and -5 wraps.
template <typename T>
T convertTextToNumeric(const std::string& text, bool rejectNegative, bool integerOnly);

extern template unsigned int convertTextToNumeric<unsigned int>(const std::string& text, bool rejectNegative,
                                                                bool integerOnly);
extern template double convertTextToNumeric<double>(const std::string& text, bool rejectNegative, bool integerOnly);

enum TrimMode { TRIM_LEFT = 0, TRIM_RIGHT = 1, TRIM_BOTH = 2 };

// Without the carriage returns, line feeds, tabs and blanks at the chosen ends.
std::string trimWhitespace(const std::string& text, TrimMode mode);

}  // namespace QSHelpers

namespace CoordinateTransformation {

// The numbers of definitions, correctly rounded and the same in every locale, also where the standard library has
// no std::from_chars for double.

// The number that `text` begins with; 0 for a text that begins with none. Not finite when it is too large or spelt
// "nan" or "inf".
//
//   number = [ "+" | "-" ] ( digits [ "." [ digits ] ] | "." digits ) [ ( "e" | "E" ) [ "+" | "-" ] digits ]
double readDouble(std::string_view text);

// The same, taken off the front of `text`. Nothing, and `text` as it was, for a text that begins with no number.
std::optional<double> takeDouble(std::string_view& text);

// The shortest text that is read back as `number`: "6378137", "0.1", "1e-07".
//
// REQUIRES: the number is finite.
std::string writeDouble(double number);

}  // namespace CoordinateTransformation
