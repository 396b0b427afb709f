// The nine exceptions of the two branches and their two bases.

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "CoordinateTransformation/BBoxOutOfBounds.h"
#include "CoordinateTransformation/CrsNotConfigured.h"
#include "CoordinateTransformation/CrsUnknownSyntaxOrAlias.h"
#include "CoordinateTransformation/FatalSubsystemError.h"
#include "CoordinateTransformation/Misconfigured.h"
#include "CoordinateTransformation/TransExecException.h"
#include "QSHelpers/ConversionError.h"
#include "QSHelpers/FileNotFoundException.h"
#include "QSHelpers/UnexpectedException.h"
#include "platform/MessageCatalogue.h"

namespace CoordinateTransformation {
namespace {

using QSHelpers::ConversionError;
using QSHelpers::FileNotFoundException;
using QSHelpers::UnexpectedException;

static_assert(std::is_abstract_v<QSHelpers::Exception>);
static_assert(!std::is_base_of_v<TransformationException, QSHelpers::Exception>);
static_assert(!std::is_base_of_v<CrsUnknownSyntaxOrAlias, CrsNotConfigured>);
static_assert(!std::is_base_of_v<CrsNotConfigured, CrsUnknownSyntaxOrAlias>);

template <typename T>
using BranchOf =
    std::conditional_t<std::is_base_of_v<QSHelpers::Exception, T>, QSHelpers::Exception, TransformationException>;

template <typename T>
constexpr const char* TEXT_OF_BRANCH =
    std::is_base_of_v<QSHelpers::Exception, T> ? "Exception" : "TransformationException";

// The properties of an exception that a server reads.
struct Report {
    const char* subsystem;
    const char* situation;
    std::string message;
    std::string serviceExceptionCode;
    bool hasReserveBuffer = false;

    bool operator==(const Report& other) const {
        return std::string(subsystem) == other.subsystem && std::string(situation) == other.situation &&
               message == other.message && serviceExceptionCode == other.serviceExceptionCode &&
               hasReserveBuffer == other.hasReserveBuffer;
    }
};

void PrintTo(const Report& report, std::ostream* stream) {
    *stream << report.subsystem << ", " << report.situation << ", \"" << report.message << "\", "
            << report.serviceExceptionCode << (report.hasReserveBuffer ? ", with a reserve buffer" : "");
}

template <typename T>
Report reportOf(const T& exception) {
    const BranchOf<T>& branch = exception;
    EXPECT_EQ(branch.getDetailedMessage(), branch.what());
    return {branch.getSubsystem(), branch.getSituation(), branch.what(), branch.getServiceExceptionCode(),
            branch.getReserveBuffer() != nullptr};
}

// The only parameter of an exception.
std::string parameterOf(const structured_exception& exception) {
    return exception.getParameterCount() == 1 ? exception.getParameter(0) : "not one parameter";
}

struct Raised {
    const char* name;
    std::function<std::unique_ptr<structured_exception>()> make;
    std::function<Report(const structured_exception&)> report;
    const char* textOfBranch;
    Report expected;
};

void PrintTo(const Raised& raised, std::ostream* stream) { *stream << raised.name; }

// Makes an exception from the arguments and compares its properties with the expected ones.
template <typename T, typename... Arguments>
Raised raised(const char* name, const Report& expected, Arguments... arguments) {
    return {name, [=] { return std::make_unique<T>(arguments...); },
            [](const structured_exception& exception) { return reportOf(dynamic_cast<const T&>(exception)); },
            TEXT_OF_BRANCH<T>, expected};
}

class RaisedExceptionTest : public testing::TestWithParam<Raised> {
protected:
    const std::unique_ptr<structured_exception> exception = GetParam().make();
    const Report& expected = GetParam().expected;
};

TEST_P(RaisedExceptionTest, ReportsUnderItsCatalogueKeyWithItsMessageAndCode) {
    EXPECT_EQ(GetParam().report(*exception), expected);
    EXPECT_EQ(exception->getReserveLength(), 0U);
}

TEST_P(RaisedExceptionTest, HasItsMessageAsParameter) { EXPECT_EQ(parameterOf(*exception), expected.message); }

TEST_P(RaisedExceptionTest, IsUnknownToTheCatalogue) {
    const std::string defaultMessage = msg::MessageHandler::object().getDefaultMessage()->getMessage();
    EXPECT_EQ(exception->getCatalogMessage(), defaultMessage);
}

TEST_P(RaisedExceptionTest, CarriesTheTextOfItsBranchAndNoFault) {
    EXPECT_STREQ(exception->structured_exception::what(), GetParam().textOfBranch);
    EXPECT_EQ(exception->getExceptionCode(), 0U);
    EXPECT_EQ(exception->getExceptionAddress(), 0U);
}

TEST_P(RaisedExceptionTest, BringsItsMessageIntoACopyOfTheRoot) {
    const structured_exception copy(*exception);
    EXPECT_EQ(copy.what(), expected.message);
    EXPECT_EQ(copy.getReserveBuffer() != nullptr, expected.hasReserveBuffer);
    EXPECT_EQ(parameterOf(copy), expected.message);
}

Report report(const char* situation, const char* message, const char* code, bool hasReserveBuffer = false) {
    return {"CoordTransformation", situation, message, code, hasReserveBuffer};
}

constexpr char UNEXPECTED[] = "qvUnexpectedException";
constexpr char FATAL[] =
    "An unknown fatal error occurred in the transformation subsystem. \t\t\tPlease report this bug! Error code: ";
const std::string FATAL_17 = std::string(FATAL) + "17";

INSTANTIATE_TEST_SUITE_P(
    Transformation, RaisedExceptionTest,
    testing::Values(
        raised<TransformationException>("Base", report("Own", "own", UNEXPECTED), "aux", "Own", "own", false),
        raised<TransformationException>("BaseWithReserve", report("Own", "", UNEXPECTED, true), "", "Own", "", true),
        raised<Misconfigured>("Misconfigured", report("Misconfigured", "no file", "qvConfigurationError"), "no file"),
        raised<FatalSubsystemError>("Fatal", report("FatalSubsystemError", FATAL_17.c_str(), UNEXPECTED), "17"),
        raised<FatalSubsystemError>("FatalByDefault", report("FatalSubsystemError", FATAL, UNEXPECTED)),
        raised<TransExecException>("TransExec", report("TransExecException", "no grid", UNEXPECTED, true), "no grid"),
        raised<TransExecException>("TransExecByDefault",
                                   report("TransExecException", "Transformation of coordinates failed", UNEXPECTED,
                                          true)),
        raised<BBoxOutOfBounds>("OutOfBounds", report("BBoxOutOfBounds", "too far", UNEXPECTED), "too far"),
        raised<BBoxOutOfBounds>("OutOfBoundsByDefault",
                                report("BBoxOutOfBounds", "BoundingBox: out of bounds!", UNEXPECTED)),
        raised<CrsNotConfigured>("NotConfigured",
                                 report("CrsUnknownSyntaxOrAlias",
                                        "The requested CRS EPSG:9999 is not set up in the configuration",
                                        "qvCrsUnavailable"),
                                 "EPSG:9999"),
        raised<CrsUnknownSyntaxOrAlias>(
            "UnknownSyntaxOrAlias",
            report("CrsUnknownSyntaxOrAlias",
                   "The requested CRS moon is not available due to an unknown syntax or a missing identifier mapping",
                   "qvCrsUnavailable"),
            "moon")),
    [](const auto& row) { return std::string(row.param.name); });

class OwnHelperException : public QSHelpers::Exception {
public:
    OwnHelperException() : Exception("auxiliary", "Own", "own", true) {}
    const char* what() const noexcept override { return getMessage().c_str(); }
    std::string getServiceExceptionCode() const override { return "code"; }
};

INSTANTIATE_TEST_SUITE_P(
    Helpers, RaisedExceptionTest,
    testing::Values(
        raised<ConversionError>("Conversion", {"QSHelpers", "ConversionError", "no", "qvConversionError"}, "no"),
        raised<UnexpectedException>("Unexpected", {"QSHelpers", "UnexpectedException", "no", UNEXPECTED}, "no"),
        raised<FileNotFoundException>("FileNotFound", {"QSHelpers", "FileNotFound", "no", "qvFileNotFound"}, "no"),
        raised<OwnHelperException>("OwnWithReserve", {"QSHelpers", "Own", "own", "code", true})),
    [](const auto& row) { return std::string(row.param.name); });

template <typename T>
class ExceptionAsValueTest : public testing::Test {
protected:
    // Also releases the buffer that an assignment does not release.
    static void assign(T& target, const T& source) {
        const std::unique_ptr<const char[]> former(target.getReserveBuffer());
        EXPECT_EQ(&(target = source), &target);
    }
};

using Exceptions =
    testing::Types<Misconfigured, FatalSubsystemError, TransExecException, BBoxOutOfBounds, CrsNotConfigured,
                   CrsUnknownSyntaxOrAlias, ConversionError, UnexpectedException, FileNotFoundException>;
TYPED_TEST_SUITE(ExceptionAsValueTest, Exceptions, );

TYPED_TEST(ExceptionAsValueTest, KeepsTheCatalogueParameterWhenTheMessageIsReplaced) {
    TypeParam exception("x");
    const std::string message = exception.what();
    exception.setMessage("changed");
    EXPECT_EQ(reportOf(exception).message, "changed");
    EXPECT_EQ(parameterOf(exception), message);
}

TYPED_TEST(ExceptionAsValueTest, CopiesMessageParameterAndKey) {
    auto source = std::make_unique<TypeParam>("x");
    const std::string message = source->what();
    source->setMessage("changed");
    const TypeParam copy(*source);
    const Report reportOfSource = reportOf(*source);
    source.reset();
    EXPECT_EQ(reportOf(copy), reportOfSource);
    EXPECT_STREQ(copy.structured_exception::what(), "changed");
    EXPECT_EQ(parameterOf(copy), message);
}

TYPED_TEST(ExceptionAsValueTest, TakesOverTheMessageButNoParametersByAssignment) {
    TypeParam target("target");
    const TypeParam source("source");
    this->assign(target, source);
    EXPECT_EQ(reportOf(target), reportOf(source));
    EXPECT_STREQ(target.structured_exception::what(), TEXT_OF_BRANCH<TypeParam>);
    EXPECT_EQ(target.getParameterCount(), 0U);
}

TYPED_TEST(ExceptionAsValueTest, IsAssignableFromItself) {
    TypeParam exception("x");
    const std::string message = exception.what();
    this->assign(exception, exception);
    EXPECT_EQ(exception.what(), message);
}

TEST(ExceptionTest, KeepsItsClassWhenAssignedFromAnother) {
    Misconfigured target("target");
    static_cast<TransformationException&>(target) = CrsNotConfigured("moon");
    EXPECT_EQ(reportOf(target),
              report("CrsUnknownSyntaxOrAlias", "The requested CRS moon is not set up in the configuration",
                     "qvConfigurationError"));
}

TEST(ExceptionTest, TakesItsOwnMessageAgain) {
    Misconfigured exception("a message longer than a short string holds");
    exception.setMessage(exception.getDetailedMessage());
    EXPECT_STREQ(exception.what(), "a message longer than a short string holds");
}

TEST(ExceptionTest, CopiesAReserveBufferAsOneByte) {
    const TransExecException source;
    const TransExecException copy(source);
    ASSERT_NE(copy.getReserveBuffer(), nullptr);
    EXPECT_STREQ(copy.getReserveBuffer(), "");
}

}  // namespace
}  // namespace CoordinateTransformation
