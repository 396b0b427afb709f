#include "errors/StructuredExceptionTranslation.h"

#include <gtest/gtest.h>
#include <string>

#include "CoordinateTransformation/structured_exception.h"
#include "tests/support/GroupingLocale.h"

namespace CoordinateTransformation {
namespace {

struct TranslatedFault {
    unsigned int code;
    const char* text;
};

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
    bool hasReserveBuffer(unsigned int code) {
        try {
            translateStructuredException(code, &pointers);
        } catch (const structured_exception& exception) {
            return exception.getReserveBuffer() != nullptr;
        }
        ADD_FAILURE() << "not translated: " << code;
        return false;
    }

    int instruction = 0;
    EXCEPTION_RECORD record{};
    EXCEPTION_POINTERS pointers{};
};

class TranslatedFaultTest : public FaultTest, public testing::WithParamInterface<TranslatedFault> {};

TEST_P(TranslatedFaultTest, CarriesItsTextCodeAndAddress) {
    const structured_exception exception = translated(GetParam().code);
    EXPECT_STREQ(exception.what(), GetParam().text);
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
    EXPECT_EQ(hasReserveBuffer(GetParam().code), GetParam().code != 0xC00000FD);
    structured_exception::reserveBufferEnabled = false;
    EXPECT_FALSE(hasReserveBuffer(GetParam().code));
}

TEST_P(TranslatedFaultTest, IsCaughtAsAStandardException) {
    EXPECT_THROW(translateStructuredException(GetParam().code, &pointers), std::exception);
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

INSTANTIATE_TEST_SUITE_P(
    Unmapped, TranslatedFaultTest,
    testing::Values(
        TranslatedFault{0xC0000417,
                        "Exception code 0xc0000417 could not be mapped to one of the known WIN32 exception codes."},
        TranslatedFault{0x1,
                        "Exception code 0x00000001 could not be mapped to one of the known WIN32 exception codes."},
        TranslatedFault{0x0,
                        "Exception code 0x00000000 could not be mapped to one of the known WIN32 exception codes."},
        TranslatedFault{0xFFFFFFFF,
                        "Exception code 0xffffffff could not be mapped to one of the known WIN32 exception codes."}));

TEST_F(FaultTest, LeavesBreakpointAndSingleStepToTheDebugger) {
    EXPECT_NO_THROW(translateStructuredException(0x80000003, &pointers));
    EXPECT_NO_THROW(translateStructuredException(0x80000004, &pointers));
}

TEST_F(FaultTest, WritesTheUnmappedCodeInEveryLocaleAlike) {
    const GroupingLocale locale;
    EXPECT_STREQ(translated(0xC0000417).what(),
                 "Exception code 0xc0000417 could not be mapped to one of the known WIN32 exception codes.");
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
