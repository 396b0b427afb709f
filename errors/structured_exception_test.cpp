#include "CoordinateTransformation/structured_exception.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/MessageCatalogue.h"
#include "platform/WindowsFaults.h"

namespace {

using testing::ElementsAre;

constexpr std::uint32_t ACCESS_VIOLATION = 0xC0000005;

static_assert(std::is_base_of_v<std::exception, structured_exception>);
static_assert(std::is_same_v<CoordinateTransformation::structured_exception, structured_exception>);
static_assert(std::is_same_v<QSHelpers::structured_exception, structured_exception>);

class Loud : public structured_exception {
public:
    using structured_exception::structured_exception;
    const char* what() const noexcept override { return "loud"; }
};

class StructuredExceptionTest : public testing::Test {
protected:
    void TearDown() override { structured_exception::reserveBufferEnabled = true; }

    static structured_exception withParameters(std::vector<const char*> list) {
        return {"text", false, "sub", "sit", static_cast<std::uint32_t>(list.size()), list.data(), true};
    }
    static structured_exception plain(const char* text = "text", bool reserve = false) {
        return {text, reserve, "sub", "sit", 0, nullptr, false};
    }
    static structured_exception fault(std::uint32_t code, bool reserve) {
        static int instruction;
        EXCEPTION_RECORD record{};
        record.ExceptionAddress = &instruction;
        EXCEPTION_POINTERS pointers{};
        pointers.ExceptionRecord = &record;
        return {code, &pointers, "fault", reserve};
    }
    static std::vector<std::string> parametersOf(const structured_exception& exception) {
        std::vector<std::string> texts;
        for (std::uint32_t i = 0; i < exception.getParameterCount(); ++i) {
            texts.emplace_back(exception.getParameter(i) != nullptr ? exception.getParameter(i) : "<null>");
        }
        return texts;
    }
};

TEST_F(StructuredExceptionTest, AnswersWithItsTextOrUnknownException) {
    EXPECT_STREQ(plain("broken").what(), "broken");
    EXPECT_STREQ(plain("").what(), "");
    EXPECT_STREQ(plain(nullptr).what(), "Unknown exception");
}

TEST_F(StructuredExceptionTest, CopiesItsText) {
    char text[] = "before";
    const structured_exception exception = plain(text);
    std::strcpy(text, "after");
    EXPECT_STREQ(exception.what(), "before");
}

TEST_F(StructuredExceptionTest, NamesItsClassAsDetail) {
    EXPECT_EQ(plain("broken").getDetailedMessage(), "structured_exception");
}

TEST_F(StructuredExceptionTest, StartsWithoutAFault) {
    const structured_exception exception = plain();
    EXPECT_EQ(exception.getExceptionCode(), 0U);
    EXPECT_EQ(exception.getExceptionAddress(), 0U);
    EXPECT_EQ(exception.getReserveBuffer(), nullptr);
    EXPECT_EQ(exception.getReserveLength(), 0U);
    EXPECT_EQ(exception.getParameterCount(), 0U);
}

TEST_F(StructuredExceptionTest, BorrowsItsCatalogueKey) {
    static const char subsystem[] = "roof";
    static const char situation[] = "leak";
    const structured_exception exception("text", false, subsystem, situation, 0, nullptr, false);
    EXPECT_EQ(exception.getSubsystem(), subsystem);
    EXPECT_EQ(exception.getSituation(), situation);
}

TEST_F(StructuredExceptionTest, AllocatesAZeroedReserveBufferOnRequest) {
    const structured_exception exception = plain("text", true);
    ASSERT_NE(exception.getReserveBuffer(), nullptr);
    const char* const buffer = exception.getReserveBuffer();
    EXPECT_TRUE(std::all_of(buffer, buffer + 4096, [](char c) { return c == '\0'; }));
    EXPECT_EQ(exception.getReserveLength(), 0U);
}

TEST_F(StructuredExceptionTest, AllocatesNoReserveBufferWhileTheSwitchIsOff) {
    structured_exception::reserveBufferEnabled = false;
    EXPECT_EQ(plain("text", true).getReserveBuffer(), nullptr);
    EXPECT_EQ(fault(ACCESS_VIOLATION, true).getReserveBuffer(), nullptr);
}

TEST_F(StructuredExceptionTest, StartsWithTheReserveSwitchOn) {
    EXPECT_TRUE(structured_exception::reserveBufferEnabled);
}

TEST_F(StructuredExceptionTest, OwnsCopiesOfItsParameters) {
    char text[] = "before";
    const structured_exception exception = withParameters({text, nullptr, ""});
    std::strcpy(text, "after");
    EXPECT_THAT(parametersOf(exception), ElementsAre("before", "<null>", ""));
    EXPECT_EQ(exception.getParameter(1), nullptr);
}

TEST_F(StructuredExceptionTest, DropsAListGivenWithoutTheCopyFlag) {
    const char* const list[] = {"a", "b"};
    EXPECT_EQ(structured_exception("text", false, "sub", "sit", 2, list, false).getParameterCount(), 0U);
}

TEST_F(StructuredExceptionTest, HasNoParametersWithoutCountOrList) {
    const char* const list[] = {"a"};
    EXPECT_EQ(structured_exception("text", false, "sub", "sit", 0, list, true).getParameterCount(), 0U);
    EXPECT_EQ(structured_exception("text", false, "sub", "sit", 3, nullptr, true).getParameterCount(), 0U);
}

TEST_F(StructuredExceptionTest, ReplacesItsParameters) {
    structured_exception exception = withParameters({"a", "b"});
    const char* const list[] = {nullptr, "d", "e"};
    exception.setParameters(3, list);
    EXPECT_THAT(parametersOf(exception), ElementsAre("<null>", "d", "e"));
}

TEST_F(StructuredExceptionTest, TakesParametersAfterItDroppedAList) {
    structured_exception exception = plain();
    const char* const list[] = {"a"};
    exception.setParameters(1, list);
    EXPECT_THAT(parametersOf(exception), ElementsAre("a"));
}

TEST_F(StructuredExceptionTest, LosesItsParametersToAnEmptyList) {
    const char* const list[] = {"c"};
    structured_exception withoutCount = withParameters({"a"});
    withoutCount.setParameters(0, list);
    EXPECT_EQ(withoutCount.getParameterCount(), 0U);
    structured_exception withoutList = withParameters({"a"});
    withoutList.setParameters(1, nullptr);
    EXPECT_EQ(withoutList.getParameterCount(), 0U);
}

TEST_F(StructuredExceptionTest, TakesAddressAndCodeOfAFault) {
    int instruction = 0;
    EXCEPTION_RECORD record{};
    record.ExceptionAddress = &instruction;
    EXCEPTION_POINTERS pointers{};
    pointers.ExceptionRecord = &record;
    const structured_exception exception(ACCESS_VIOLATION, &pointers, "access", false);
    EXPECT_EQ(exception.getExceptionCode(), ACCESS_VIOLATION);
    EXPECT_EQ(exception.getExceptionAddress(), reinterpret_cast<std::uintptr_t>(&instruction));
    EXPECT_STREQ(exception.what(), "access");
}

TEST_F(StructuredExceptionTest, ReportsAFaultUnderThePairOfFaults) {
    const structured_exception exception = fault(ACCESS_VIOLATION, false);
    EXPECT_STREQ(exception.getSubsystem(), "exception");
    EXPECT_STREQ(exception.getSituation(), "default");
    EXPECT_EQ(exception.getParameterCount(), 0U);
}

TEST_F(StructuredExceptionTest, AllocatesTheReserveBufferOfAFaultUnlessTheStackOverflowed) {
    EXPECT_NE(fault(ACCESS_VIOLATION, true).getReserveBuffer(), nullptr);
    EXPECT_EQ(fault(ACCESS_VIOLATION, false).getReserveBuffer(), nullptr);
    EXPECT_EQ(fault(0xC00000FD, true).getReserveBuffer(), nullptr);
}

TEST_F(StructuredExceptionTest, CopiesEveryField) {
    structured_exception source = fault(ACCESS_VIOLATION, false);
    const char* const list[] = {"a", nullptr};
    source.setParameters(2, list);
    const structured_exception copy(source);
    EXPECT_STREQ(copy.what(), "fault");
    EXPECT_EQ(copy.getExceptionCode(), source.getExceptionCode());
    EXPECT_EQ(copy.getExceptionAddress(), source.getExceptionAddress());
    EXPECT_EQ(copy.getSubsystem(), source.getSubsystem());
    EXPECT_EQ(copy.getSituation(), source.getSituation());
    EXPECT_THAT(parametersOf(copy), ElementsAre("a", "<null>"));
}

TEST_F(StructuredExceptionTest, OutlivesTheObjectItWasCopiedFrom) {
    auto source = std::make_unique<structured_exception>(withParameters({"a"}));
    const structured_exception copy(*source);
    EXPECT_NE(copy.getParameter(0), source->getParameter(0));
    source.reset();
    EXPECT_STREQ(copy.what(), "text");
    EXPECT_THAT(parametersOf(copy), ElementsAre("a"));
}

TEST_F(StructuredExceptionTest, CopiesTheTextThatTheMostDerivedClassAnswers) {
    const Loud source("quiet", false, "sub", "sit", 0, nullptr, false);
    EXPECT_STREQ(structured_exception(source).what(), "loud");
}

TEST_F(StructuredExceptionTest, CopiesAReserveBufferAsAnEmptyTextOfOneByte) {
    const structured_exception source = plain("text", true);
    structured_exception::reserveBufferEnabled = false;
    const structured_exception copy(source);
    ASSERT_NE(copy.getReserveBuffer(), nullptr);
    EXPECT_NE(copy.getReserveBuffer(), source.getReserveBuffer());
    EXPECT_STREQ(copy.getReserveBuffer(), "");
    EXPECT_EQ(copy.getReserveLength(), 0U);
    EXPECT_STREQ(structured_exception(copy).getReserveBuffer(), "");
}

TEST_F(StructuredExceptionTest, CopiesNoReserveBufferWhereThereIsNone) {
    const structured_exception source = plain();
    EXPECT_EQ(structured_exception(source).getReserveBuffer(), nullptr);
}

TEST_F(StructuredExceptionTest, AssignsFaultAndCatalogueKey) {
    structured_exception target = plain("target");
    const structured_exception source = fault(ACCESS_VIOLATION, false);
    EXPECT_EQ(&(target = source), &target);
    EXPECT_EQ(target.getExceptionCode(), ACCESS_VIOLATION);
    EXPECT_EQ(target.getExceptionAddress(), source.getExceptionAddress());
    EXPECT_STREQ(target.getSubsystem(), "exception");
    EXPECT_STREQ(target.getSituation(), "default");
}

TEST_F(StructuredExceptionTest, KeepsItsTextWhenAssignedTo) {
    structured_exception target = plain("target");
    target = plain("source");
    EXPECT_STREQ(target.what(), "target");
}

TEST_F(StructuredExceptionTest, HoldsNoParametersAfterAnAssignment) {
    structured_exception target = withParameters({"a", "b"});
    target = withParameters({"c"});
    EXPECT_EQ(target.getParameterCount(), 0U);
    structured_exception targetWithout = plain();
    targetWithout = withParameters({"c"});
    EXPECT_EQ(targetWithout.getParameterCount(), 0U);
    structured_exception targetOfPlain = withParameters({"a"});
    targetOfPlain = plain();
    EXPECT_EQ(targetOfPlain.getParameterCount(), 0U);
}

TEST_F(StructuredExceptionTest, TakesParametersAgainAfterAnAssignment) {
    structured_exception target = withParameters({"a"});
    target = plain();
    const char* const list[] = {"b"};
    target.setParameters(1, list);
    EXPECT_THAT(parametersOf(target), ElementsAre("b"));
}

TEST_F(StructuredExceptionTest, LeavesItsFormerReserveBufferUnreleasedWhenAssignedTo) {
    structured_exception target = plain("target", true);
    const std::unique_ptr<const char[]> former(target.getReserveBuffer());
    target = plain("source", true);
    ASSERT_NE(target.getReserveBuffer(), nullptr);
    EXPECT_NE(target.getReserveBuffer(), former.get());
    EXPECT_STREQ(target.getReserveBuffer(), "");
    EXPECT_EQ(former[4095], '\0');
}

TEST_F(StructuredExceptionTest, HasNoReserveBufferAfterAnAssignmentFromOneWithout) {
    structured_exception target = plain("target", true);
    const std::unique_ptr<const char[]> former(target.getReserveBuffer());
    target = plain("source");
    EXPECT_EQ(target.getReserveBuffer(), nullptr);
}

TEST_F(StructuredExceptionTest, SurvivesAssignmentToItself) {
    structured_exception exception = withParameters({"a"});
    const structured_exception& same = exception;
    exception = same;
    EXPECT_STREQ(exception.what(), "text");
    EXPECT_EQ(exception.getParameterCount(), 0U);
}

class CatalogMessageTest : public StructuredExceptionTest {
protected:
    const std::string defaultMessage = msg::MessageHandler::object().getDefaultMessage()->getMessage();
};

TEST_F(CatalogMessageTest, IsTheDefaultForAPairThatTheCatalogueDoesNotKnow) {
    EXPECT_EQ(withParameters({"a"}).getCatalogMessage(), defaultMessage);
    EXPECT_EQ(plain().getCatalogMessage(), defaultMessage);
}

TEST_F(CatalogMessageTest, IsTheTemplateForAnExceptionWithoutParameters) {
    const msg::MTE entry(1, "en", "sub", "sit", "Template [&0]", nullptr, false, false);
    EXPECT_STREQ(plain().getCatalogMessage(), "Template [&0]");
}

TEST_F(CatalogMessageTest, OfAFaultIsTheTemplateRegisteredAtLoad) {
    EXPECT_STREQ(fault(ACCESS_VIOLATION, false).getCatalogMessage(),
                 "Meldung: Das Subsystem [&0] hat die Fehlersituation [&1] gemeldet. Text: [&2], Parameter sind 1: "
                 "[&3], 2: [&4], 3: [&5], usw.");
}

TEST_F(CatalogMessageTest, IsTheTemplateOnceAnAssignmentTookTheParameters) {
    const msg::MTE entry(1, "en", "sub", "sit", "Template [&0]", nullptr, false, false);
    structured_exception exception = withParameters({"a"});
    exception = plain();
    EXPECT_STREQ(exception.getCatalogMessage(), "Template [&0]");
}

using CatalogMessageDeathTest = CatalogMessageTest;

TEST_F(CatalogMessageDeathTest, FaultsForParametersWhosePairIsKnown) {
    const msg::MTE entry(1, "en", "sub", "sit", "Template [&0]", nullptr, false, false);
    const structured_exception exception = withParameters({"a"});
    EXPECT_DEATH(exception.getCatalogMessage(), "");
}

TEST_F(CatalogMessageDeathTest, FaultsForParametersSetLaterOn) {
    const msg::MTE entry(1, "en", "sub", "sit", "Template [&0]", nullptr, false, false);
    structured_exception exception = plain();
    const char* const list[] = {"a"};
    exception.setParameters(1, list);
    EXPECT_DEATH(exception.getCatalogMessage(), "");
}

TEST_F(CatalogMessageDeathTest, FaultsForTheParametersOfACopy) {
    const msg::MTE entry(1, "en", "sub", "sit", "Template [&0]", nullptr, false, false);
    const structured_exception source = withParameters({"a"});
    const structured_exception copy(source);
    EXPECT_DEATH(copy.getCatalogMessage(), "");
}

}  // namespace
