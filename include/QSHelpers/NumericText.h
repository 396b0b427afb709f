#pragma once

#include <string>

#include "CoordinateTransformation/Export.h"

namespace QSHelpers {

// Numbers as responses write them. The functions use neither shared state nor the locale; any thread may call them.

/// `value` in decimal, without sign, padding or grouping.
COORDTRANS_EXPORT std::string convertNumericToText(unsigned int value);
/// Writes `value` in decimal, with "-" when it is negative, without padding or grouping.
COORDTRANS_EXPORT std::string convertNumericToText(int value);
/// Writes `value` with a point as decimal separator and without grouping, in its own unit. `precision` digits follow
/// the point, correctly rounded. A negative precision writes only significant digits: at most 15 without exponent (1 is
/// "1", 2.5e-7 is "0.00000025"), at most 16 with it (1 is "1.e+00").
///
/// Minus infinity is "-inf" and a NaN "nan" or "-nan". Positive infinity is a single NUL character, by which callers
/// recognise it.
///
/// With `scientific` the number has one digit before the point and an exponent: 1 with precision 3 is "1.000e+00".
///
/// A text has at most 499 characters. For a longer one throws UnexpectedException, or ConversionError with a negative
/// precision and an exponent.
COORDTRANS_EXPORT std::string convertNumericToText(double value, int precision, bool scientific);

}  // namespace QSHelpers
