#include "errors/StructuredExceptionTranslation.h"

#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "CoordinateTransformation/structured_exception.h"
#include "tests/support/GroupingLocale.h"

namespace CoordinateTransformation {
namespace {

struct TranslatedFault {
    unsigned int code;
    std::string text;
};

void PrintTo(const TranslatedFault& fault, std::ostream* stream) { *stream << fault.text; }

class FaultTest : public testing::Test {
protected:
    FaultTest() {
        record.ExceptionAddress = &instruction;
        pointers.ExceptionRecord = &record;
    }
    ~FaultTest() override { structured_exception::reserveBufferEnabled = true; }

    structured_exception translated(unsigned int code) {
        try {
            translateStructuredException(code, &pointers);
        } catch (const structured_exception& exception) {
            return exception;
        }
        ADD_FAILURE() << "not translated: " << code;
        return {code, &pointers, "not translated", false};
    }

    int instruction = 0;
    EXCEPTION_RECORD record{};
    EXCEPTION_POINTERS pointers{};
};

class TranslatedFaultTest : public FaultTest, public testing::WithParamInterface<TranslatedFault> {};

TEST_P(TranslatedFaultTest, CarriesItsTextCodeAndAddress) {
    const structured_exception exception = translated(GetParam().code);
    EXPECT_EQ(exception.what(), GetParam().text);
    EXPECT_EQ(exception.getExceptionCode(), GetParam().code);
    EXPECT_EQ(exception.getExceptionAddress(), reinterpret_cast<std::uintptr_t>(&instruction));
}

TEST_P(TranslatedFaultTest, ReportsUnderThePairOfFaultsWithoutParameters) {
    const structured_exception exception = translated(GetParam().code);
    EXPECT_STREQ(exception.getSubsystem(), "exception");
    EXPECT_STREQ(exception.getSituation(), "default");
    EXPECT_EQ(exception.getParameterCount(), 0U);
    EXPECT_EQ(std::string(exception.getCatalogMessage()).rfind("Meldung: Das Subsystem [&0] hat", 0), 0U);
}

TEST_P(TranslatedFaultTest, HasAReserveBufferUnlessTheStackOverflowed) {
    EXPECT_EQ(translated(GetParam().code).getReserveBuffer() != nullptr, GetParam().code != 0xC00000FD);
    structured_exception::reserveBufferEnabled = false;
    EXPECT_EQ(translated(GetParam().code).getReserveBuffer(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Known, TranslatedFaultTest,
    testing::Values(
        TranslatedFault{0x80000001, "guard page"}, TranslatedFault{0x80000002, "datatype misalignment"},
        TranslatedFault{0xC0000005, "access violation"}, TranslatedFault{0xC0000006, "in page error"},
        TranslatedFault{0xC0000008, "invalid handle"}, TranslatedFault{0xC000001D, "illegal instruction"},
        TranslatedFault{0xC0000025, "noncontinuable exception"}, TranslatedFault{0xC0000026, "invalid disposition"},
        TranslatedFault{0xC000008C, "array bounds exceeded"}, TranslatedFault{0xC000008D, "float denormal operand"},
        TranslatedFault{0xC000008E, "float divide by zero"}, TranslatedFault{0xC000008F, "float inexact result"},
        TranslatedFault{0xC0000090, "float invalid operation"}, TranslatedFault{0xC0000091, "float overflow"},
        TranslatedFault{0xC0000092, "float stack check"}, TranslatedFault{0xC0000093, "float underflow"},
        TranslatedFault{0xC0000094, "integer divide by zero"}, TranslatedFault{0xC0000095, "integer overflow"},
        TranslatedFault{0xC0000096, "private instruction"}, TranslatedFault{0xC00000FD, "stack overflow"}));

std::string unmapped(const std::string& code) {
    return "Exception code " + code + " could not be mapped to one of the known WIN32 exception codes.";
}

INSTANTIATE_TEST_SUITE_P(Unmapped, TranslatedFaultTest,
                         testing::Values(TranslatedFault{0xC0000417, unmapped("0xc0000417")},
                                         TranslatedFault{0x1, unmapped("0x00000001")},
                                         TranslatedFault{0x0, unmapped("0x00000000")},
                                         TranslatedFault{0xFFFFFFFF, unmapped("0xffffffff")}));

TEST_F(FaultTest, LeavesBreakpointAndSingleStepToTheDebugger) {
    EXPECT_NO_THROW(translateStructuredException(0x80000003, &pointers));
    EXPECT_NO_THROW(translateStructuredException(0x80000004, &pointers));
}

TEST_F(FaultTest, WritesTheUnmappedCodeInEveryLocaleAlike) {
    const GroupingLocale locale;
    EXPECT_EQ(translated(0xC0000417).what(), unmapped("0xc0000417"));
}

TEST(TranslatorRegistrationTest, IsRefusedWhereThePlatformHasNoTranslators) {
#if defined(_WIN32)
    EXPECT_TRUE(registerStructuredExceptionTranslator());
#else
    EXPECT_FALSE(registerStructuredExceptionTranslator());
#endif
}

}  // namespace
}  // namespace CoordinateTransformation
