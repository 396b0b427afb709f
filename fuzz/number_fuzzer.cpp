// Reads numbers. An accepted code, written as digits, reads as the same code. An accepted double, written with 15
// digits, reads as the same number within that precision.

#include <cmath>

#include "fuzz/Input.h"
#include "text/NumericText.h"

using namespace QSHelpers;

namespace {

// Digits are read as an integer times a power of ten. For a smaller number with 15 digits, that power is below the
// normal range of double and therefore less exact.
constexpr double SMALLEST_EXACT = 1e-293;

template <typename Read>
void acceptOrRefuse(Read read) {
    try {
        read();
    } catch (const ConversionError& refused) {
        Fuzz::require(*refused.what() != '\0');
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = Fuzz::text(data, size);
    acceptOrRefuse([&text] {
        const auto code = convertTextToNumeric<unsigned int>(text, true, true);
        Fuzz::require(convertTextToNumeric<unsigned int>(convertNumericToText(code), true, true) == code);
    });
    acceptOrRefuse([&text] { convertTextToNumeric<unsigned int>(text, false, false); });
    acceptOrRefuse([&text] {
        const auto number = convertTextToNumeric<double>(text, false, false);
        Fuzz::require(std::isfinite(number));
        const auto again = convertTextToNumeric<double>(convertNumericToText(number, -1, false), false, false);
        Fuzz::require(std::fabs(again - number) <= 1e-14 * std::fabs(number) || std::fabs(number) < SMALLEST_EXACT);
    });
    return 0;
}
