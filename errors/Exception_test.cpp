#include "QSHelpers/Exception.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <type_traits>

#include "CoordinateTransformation/TransformationException.h"
#include "QSHelpers/ConversionError.h"
#include "QSHelpers/FileNotFoundException.h"
#include "QSHelpers/UnexpectedException.h"
#include "platform/MessageCatalogue.h"

namespace QSHelpers {
namespace {

static_assert(std::is_abstract_v<Exception>);
static_assert(!std::is_base_of_v<CoordinateTransformation::TransformationException, Exception>);

struct Report {
    const char* situation;
    const char* serviceExceptionCode;
};

template <typename T>
Report expectedReport();
template <>
Report expectedReport<ConversionError>() {
    return {"ConversionError", "qvConversionError"};
}
template <>
Report expectedReport<UnexpectedException>() {
    return {"UnexpectedException", "qvUnexpectedException"};
}
template <>
Report expectedReport<FileNotFoundException>() {
    return {"FileNotFound", "qvFileNotFound"};
}

template <typename T>
class HelperBranchTest : public testing::Test {};

using Subclasses = testing::Types<ConversionError, UnexpectedException, FileNotFoundException>;
TYPED_TEST_SUITE(HelperBranchTest, Subclasses, );

TYPED_TEST(HelperBranchTest, TellsItsMessageThroughEveryBase) {
    const TypeParam exception("broken");
    EXPECT_STREQ(static_cast<const std::exception&>(exception).what(), "broken");
    EXPECT_STREQ(static_cast<const Exception&>(exception).what(), "broken");
    EXPECT_EQ(static_cast<const structured_exception&>(exception).getDetailedMessage(), "broken");
}

TYPED_TEST(HelperBranchTest, HasItsServiceExceptionCode) {
    const TypeParam exception("broken");
    EXPECT_EQ(static_cast<const Exception&>(exception).getServiceExceptionCode(),
              expectedReport<TypeParam>().serviceExceptionCode);
}

TYPED_TEST(HelperBranchTest, ReportsUnderItsCatalogueKeyWithTheMessageAsParameter) {
    const TypeParam exception("broken");
    EXPECT_STREQ(exception.getSubsystem(), "QSHelpers");
    EXPECT_STREQ(exception.getSituation(), expectedReport<TypeParam>().situation);
    ASSERT_EQ(exception.getParameterCount(), 1U);
    EXPECT_STREQ(exception.getParameter(0), "broken");
    EXPECT_STREQ(exception.structured_exception::what(), "Exception");
}

TYPED_TEST(HelperBranchTest, IsUnknownToTheCatalogue) {
    const std::string defaultMessage = msg::MessageHandler::object().getDefaultMessage()->getMessage();
    EXPECT_EQ(TypeParam("broken").getCatalogMessage(), defaultMessage);
}

TYPED_TEST(HelperBranchTest, AllocatesNoReserveBuffer) { EXPECT_EQ(TypeParam("broken").getReserveBuffer(), nullptr); }

TYPED_TEST(HelperBranchTest, IsCaughtAsEachOfItsBases) {
    EXPECT_THROW(throw TypeParam("x"), TypeParam);
    EXPECT_THROW(throw TypeParam("x"), Exception);
    EXPECT_THROW(throw TypeParam("x"), structured_exception);
    EXPECT_THROW(throw TypeParam("x"), std::exception);
}

TYPED_TEST(HelperBranchTest, KeepsTheCatalogueParameterWhenTheMessageIsReplaced) {
    TypeParam exception("broken");
    exception.setMessage("x");
    EXPECT_STREQ(exception.what(), "x");
    EXPECT_EQ(exception.getDetailedMessage(), "x");
    EXPECT_STREQ(exception.getParameter(0), "broken");
}

TYPED_TEST(HelperBranchTest, CopiesMessageAndParameter) {
    auto source = std::make_unique<TypeParam>("broken");
    const TypeParam copy(*source);
    source.reset();
    EXPECT_STREQ(copy.what(), "broken");
    EXPECT_STREQ(copy.structured_exception::what(), "broken");
    EXPECT_STREQ(copy.getParameter(0), "broken");
}

TYPED_TEST(HelperBranchTest, TakesOverTheMessageButNoParametersByAssignment) {
    TypeParam target("target");
    const TypeParam source("source");
    EXPECT_EQ(&(target = source), &target);
    EXPECT_STREQ(target.what(), "source");
    EXPECT_STREQ(target.structured_exception::what(), "Exception");
    EXPECT_EQ(target.getParameterCount(), 0U);
}

class ReservingException : public Exception {
public:
    ReservingException() : Exception("auxiliary", "Reserving", "reserving", true) {}
    const char* what() const noexcept override { return "answer"; }
    std::string getServiceExceptionCode() const override { return "code"; }
};

TEST(ExceptionTest, PassesReserveFlagAndSituationOn) {
    const ReservingException exception;
    EXPECT_NE(exception.getReserveBuffer(), nullptr);
    EXPECT_STREQ(exception.getSituation(), "Reserving");
    EXPECT_EQ(exception.getDetailedMessage(), "reserving");
    EXPECT_STREQ(exception.getParameter(0), "reserving");
}

}  // namespace
}  // namespace QSHelpers
