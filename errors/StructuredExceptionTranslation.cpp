#include "errors/StructuredExceptionTranslation.h"

#include <algorithm>
#include <cstdint>
#include <iomanip>
#include <iterator>
#include <locale>
#include <sstream>
#include <string>

#if defined(_WIN32)
#include <eh.h>
#endif

#include "CoordinateTransformation/structured_exception.h"

namespace CoordinateTransformation {
namespace {

struct PlatformFault {
    std::uint32_t code;
    const char* text;
};

constexpr PlatformFault FAULTS[] = {
    {0x80000001, "guard page"},
    {0x80000002, "datatype misalignment"},
    {0xC0000005, "access violation"},
    {0xC0000006, "in page error"},
    {0xC0000008, "invalid handle"},
    {0xC000001D, "illegal instruction"},
    {0xC0000025, "noncontinuable exception"},
    {0xC0000026, "invalid disposition"},
    {0xC000008C, "array bounds exceeded"},
    {0xC000008D, "float denormal operand"},
    {0xC000008E, "float divide by zero"},
    {0xC000008F, "float inexact result"},
    {0xC0000090, "float invalid operation"},
    {0xC0000091, "float overflow"},
    {0xC0000092, "float stack check"},
    {0xC0000093, "float underflow"},
    {0xC0000094, "integer divide by zero"},
    {0xC0000095, "integer overflow"},
    {0xC0000096, "private instruction"},
    {STACK_OVERFLOW_FAULT, "stack overflow"},
};

std::string textOfUnmapped(std::uint32_t code) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << "Exception code 0x" << std::hex << std::setw(8) << std::setfill('0') << code
         << " could not be mapped to one of the known WIN32 exception codes.";
    return text.str();
}

}  // namespace

void translateStructuredException(unsigned int code, EXCEPTION_POINTERS* info) {
    if (code == BREAKPOINT_FAULT || code == SINGLE_STEP_FAULT) return;
    const auto* const fault = std::find_if(std::begin(FAULTS), std::end(FAULTS),
                                           [code](const PlatformFault& known) { return known.code == code; });
    if (fault != std::end(FAULTS)) throw structured_exception(code, info, fault->text, true);
    throw structured_exception(code, info, textOfUnmapped(code).c_str(), true);
}

bool registerStructuredExceptionTranslator() {
#if defined(_WIN32)
    _set_se_translator(translateStructuredException);
    return true;
#else
    return false;
#endif
}

}  // namespace CoordinateTransformation
