#include "CoordinateTransformation/TransformationException.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <type_traits>

#include "CoordinateTransformation/BBoxOutOfBounds.h"
#include "CoordinateTransformation/CrsNotConfigured.h"
#include "CoordinateTransformation/CrsUnknownSyntaxOrAlias.h"
#include "CoordinateTransformation/FatalSubsystemError.h"
#include "CoordinateTransformation/Misconfigured.h"
#include "CoordinateTransformation/TransExecException.h"
#include "platform/MessageCatalogue.h"

namespace CoordinateTransformation {
namespace {

struct RaisedException {
    const char* name;
    std::function<std::unique_ptr<TransformationException>()> make;
    const char* situation;
    const char* message;
    const char* serviceExceptionCode;
    bool reserve;
};

void PrintTo(const RaisedException& raised, std::ostream* stream) { *stream << raised.name; }

template <typename T, typename... Arguments>
std::function<std::unique_ptr<TransformationException>()> raising(Arguments... arguments) {
    return [=] { return std::make_unique<T>(arguments...); };
}

class RaisedExceptionTest : public testing::TestWithParam<RaisedException> {
protected:
    const std::unique_ptr<TransformationException> exception = GetParam().make();
};

TEST_P(RaisedExceptionTest, TellsItsMessage) {
    EXPECT_STREQ(exception->what(), GetParam().message);
    EXPECT_EQ(exception->getDetailedMessage(), GetParam().message);
}

TEST_P(RaisedExceptionTest, HasItsServiceExceptionCode) {
    EXPECT_EQ(exception->getServiceExceptionCode(), GetParam().serviceExceptionCode);
}

TEST_P(RaisedExceptionTest, ReportsUnderItsCatalogueKeyWithTheMessageAsParameter) {
    EXPECT_STREQ(exception->getSubsystem(), "CoordTransformation");
    EXPECT_STREQ(exception->getSituation(), GetParam().situation);
    ASSERT_EQ(exception->getParameterCount(), 1U);
    EXPECT_STREQ(exception->getParameter(0), GetParam().message);
}

TEST_P(RaisedExceptionTest, IsUnknownToTheCatalogue) {
    const std::string defaultMessage = msg::MessageHandler::object().getDefaultMessage()->getMessage();
    EXPECT_EQ(exception->getCatalogMessage(), defaultMessage);
}

TEST_P(RaisedExceptionTest, AllocatesAReserveBufferOnlyForAFailedTransformation) {
    EXPECT_EQ(exception->getReserveBuffer() != nullptr, GetParam().reserve);
    EXPECT_EQ(exception->getReserveLength(), 0U);
}

TEST_P(RaisedExceptionTest, CarriesTheWhatTextOfItsBranch) {
    EXPECT_STREQ(exception->structured_exception::what(), "TransformationException");
    EXPECT_EQ(exception->getExceptionCode(), 0U);
    EXPECT_EQ(exception->getExceptionAddress(), 0U);
}

TEST_P(RaisedExceptionTest, BringsItsMessageIntoACopyOfTheRoot) {
    const structured_exception copy(*exception);
    EXPECT_STREQ(copy.what(), GetParam().message);
    EXPECT_EQ(copy.getReserveBuffer() != nullptr, GetParam().reserve);
    EXPECT_STREQ(copy.getParameter(0), GetParam().message);
}

TEST_P(RaisedExceptionTest, KeepsTheCatalogueParameterWhenTheMessageIsReplaced) {
    exception->setMessage("x");
    EXPECT_STREQ(exception->what(), "x");
    EXPECT_EQ(exception->getDetailedMessage(), "x");
    EXPECT_STREQ(exception->getParameter(0), GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    All, RaisedExceptionTest,
    testing::Values(
        RaisedException{"TransformationException",
                        raising<TransformationException>(std::string("aux"), "Own", std::string("own"), false), "Own",
                        "own", "qvUnexpectedException", false},
        RaisedException{"TransformationExceptionWithReserve",
                        raising<TransformationException>(std::string(), "Own", std::string(), true), "Own", "",
                        "qvUnexpectedException", true},
        RaisedException{"Misconfigured", raising<Misconfigured>("no such file"), "Misconfigured", "no such file",
                        "qvConfigurationError", false},
        RaisedException{"FatalSubsystemError", raising<FatalSubsystemError>("17"), "FatalSubsystemError",
                        "An unknown fatal error occurred in the transformation subsystem. \t\t\tPlease report this "
                        "bug! Error code: 17",
                        "qvUnexpectedException", false},
        RaisedException{"FatalSubsystemErrorByDefault", raising<FatalSubsystemError>(), "FatalSubsystemError",
                        "An unknown fatal error occurred in the transformation subsystem. \t\t\tPlease report this "
                        "bug! Error code: ",
                        "qvUnexpectedException", false},
        RaisedException{"TransExecException", raising<TransExecException>("no grid"), "TransExecException", "no grid",
                        "qvUnexpectedException", true},
        RaisedException{"TransExecExceptionByDefault", raising<TransExecException>(), "TransExecException",
                        "Transformation of coordinates failed", "qvUnexpectedException", true},
        RaisedException{"BBoxOutOfBounds", raising<BBoxOutOfBounds>("too far"), "BBoxOutOfBounds", "too far",
                        "qvUnexpectedException", false},
        RaisedException{"BBoxOutOfBoundsByDefault", raising<BBoxOutOfBounds>(), "BBoxOutOfBounds",
                        "BoundingBox: out of bounds!", "qvUnexpectedException", false},
        RaisedException{"CrsNotConfigured", raising<CrsNotConfigured>("EPSG:9999"), "CrsUnknownSyntaxOrAlias",
                        "The requested CRS EPSG:9999 is not set up in the configuration", "qvCrsUnavailable", false},
        RaisedException{"CrsUnknownSyntaxOrAlias", raising<CrsUnknownSyntaxOrAlias>("moon"), "CrsUnknownSyntaxOrAlias",
                        "The requested CRS moon is not available due to an unknown syntax or a missing identifier "
                        "mapping",
                        "qvCrsUnavailable", false}),
    [](const auto& raised) { return std::string(raised.param.name); });

template <typename T>
class TransformationBranchTest : public testing::Test {
protected:
    // Also releases the buffer that an assignment leaves behind.
    static void assign(T& target, const T& source) {
        const std::unique_ptr<const char[]> former(target.getReserveBuffer());
        EXPECT_EQ(&(target = source), &target);
    }
};

using Subclasses = testing::Types<Misconfigured, FatalSubsystemError, TransExecException, BBoxOutOfBounds,
                                  CrsNotConfigured, CrsUnknownSyntaxOrAlias>;
TYPED_TEST_SUITE(TransformationBranchTest, Subclasses, );

TYPED_TEST(TransformationBranchTest, IsCaughtAsEachOfItsBases) {
    EXPECT_THROW(throw TypeParam("x"), TypeParam);
    EXPECT_THROW(throw TypeParam("x"), TransformationException);
    EXPECT_THROW(throw TypeParam("x"), structured_exception);
    EXPECT_THROW(throw TypeParam("x"), std::exception);
}

TYPED_TEST(TransformationBranchTest, AnswersAlikeThroughEveryBase) {
    const TypeParam exception("x");
    const std::exception& standard = exception;
    const structured_exception& root = exception;
    EXPECT_STREQ(standard.what(), exception.what());
    EXPECT_EQ(root.getDetailedMessage(), exception.what());
}

TYPED_TEST(TransformationBranchTest, CopiesMessageParameterAndKey) {
    auto source = std::make_unique<TypeParam>("x");
    const std::string message = source->what();
    source->setMessage("changed");
    const TypeParam copy(*source);
    source.reset();
    EXPECT_STREQ(copy.what(), "changed");
    EXPECT_STREQ(copy.structured_exception::what(), "changed");
    EXPECT_STREQ(copy.getParameter(0), message.c_str());
    EXPECT_STREQ(copy.getSituation(), TypeParam("x").getSituation());
    EXPECT_EQ(copy.getServiceExceptionCode(), TypeParam("x").getServiceExceptionCode());
}

TYPED_TEST(TransformationBranchTest, TakesOverTheMessageButNoParametersByAssignment) {
    TypeParam target("target");
    const TypeParam source("source");
    this->assign(target, source);
    EXPECT_STREQ(target.what(), source.what());
    EXPECT_EQ(target.getDetailedMessage(), source.getDetailedMessage());
    EXPECT_STREQ(target.structured_exception::what(), "TransformationException");
    EXPECT_EQ(target.getParameterCount(), 0U);
}

TYPED_TEST(TransformationBranchTest, IsAssignableFromItself) {
    TypeParam exception("x");
    const std::string message = exception.what();
    this->assign(exception, exception);
    EXPECT_EQ(exception.what(), message);
}

TEST(TransformationExceptionTest, KeepsItsClassWhenAssignedFromAnother) {
    Misconfigured target("target");
    static_cast<TransformationException&>(target) = CrsNotConfigured("moon");
    EXPECT_STREQ(target.what(), "The requested CRS moon is not set up in the configuration");
    EXPECT_STREQ(target.getSituation(), "CrsUnknownSyntaxOrAlias");
    EXPECT_EQ(target.getServiceExceptionCode(), "qvConfigurationError");
}

TEST(TransformationExceptionTest, TakesItsOwnMessageAgain) {
    Misconfigured exception("a message longer than a short string holds");
    exception.setMessage(exception.getDetailedMessage());
    EXPECT_STREQ(exception.what(), "a message longer than a short string holds");
}

TEST(TransformationExceptionTest, CopiesAReserveBufferAsOneByte) {
    const TransExecException source;
    const TransExecException copy(source);
    ASSERT_NE(copy.getReserveBuffer(), nullptr);
    EXPECT_STREQ(copy.getReserveBuffer(), "");
}

TEST(TransformationExceptionTest, IsOneLineOfBasesDownFromTheRoot) {
    EXPECT_TRUE((std::is_convertible_v<Misconfigured*, TransformationException*>));
    EXPECT_FALSE((std::is_base_of_v<CrsUnknownSyntaxOrAlias, CrsNotConfigured>));
    EXPECT_FALSE((std::is_base_of_v<CrsNotConfigured, CrsUnknownSyntaxOrAlias>));
}

}  // namespace
}  // namespace CoordinateTransformation
