// A separate program, because it replaces the global allocation functions.

#include "tests/support/AllocationFailure.h"

#include <string>

#include <gtest/gtest.h>

#include "CoordinateTransformation/BBoxOutOfBounds.h"
#include "CoordinateTransformation/CrsNotConfigured.h"
#include "CoordinateTransformation/CrsUnknownSyntaxOrAlias.h"
#include "CoordinateTransformation/FatalSubsystemError.h"
#include "CoordinateTransformation/Misconfigured.h"
#include "CoordinateTransformation/TransExecException.h"
#include "CoordinateTransformation/structured_exception.h"
#include "QSHelpers/ConversionError.h"
#include "QSHelpers/FileNotFoundException.h"
#include "QSHelpers/UnexpectedException.h"

namespace {

using CoordinateTransformation::Misconfigured;
using CoordinateTransformation::TransExecException;
using TestSupport::allocationsOf;
using TestSupport::succeedsWith;

const std::string LONG_TEXT(200, 'x');

TEST(AllocationFailureTest, LosesNothingWhenARootIsBuilt) {
    const char* const list[] = {"a", nullptr, "b"};
    const auto build = [&list] { structured_exception("text", true, "sub", "sit", 3, list, true); };
    EXPECT_EQ(allocationsOf(build), 5);
}

template <typename E>
void expectNothingLostBy(long leastAllocations) {
    EXPECT_GE(allocationsOf([] { const E exception(LONG_TEXT); }), leastAllocations);
    const E source(LONG_TEXT);
    EXPECT_GE(allocationsOf([&source] { const E copy(source); }), leastAllocations);
}

TEST(AllocationFailureTest, LosesNothingWhenAnExceptionOfABranchIsBuiltOrCopied) {
    expectNothingLostBy<Misconfigured>(4);
    expectNothingLostBy<TransExecException>(5);
    expectNothingLostBy<CoordinateTransformation::BBoxOutOfBounds>(4);
    expectNothingLostBy<CoordinateTransformation::CrsNotConfigured>(4);
    expectNothingLostBy<CoordinateTransformation::CrsUnknownSyntaxOrAlias>(4);
    expectNothingLostBy<CoordinateTransformation::FatalSubsystemError>(4);
    expectNothingLostBy<QSHelpers::ConversionError>(4);
    expectNothingLostBy<QSHelpers::FileNotFoundException>(4);
    expectNothingLostBy<QSHelpers::UnexpectedException>(4);
}

TEST(AllocationFailureTest, LeavesNoParametersWhenTheNewOnesCannotBeHad) {
    const char* const list[] = {"c", "d"};
    for (long allocations = 0; allocations < 3; ++allocations) {
        structured_exception exception("text", false, "sub", "sit", 1, list, true);
        EXPECT_FALSE(succeedsWith(allocations, [&exception, &list] { exception.setParameters(2, list); }));
        EXPECT_EQ(exception.getParameterCount(), 0U);
    }
}

TEST(AllocationFailureTest, LeavesAnExceptionAloneWhenAnAssignmentFails) {
    TransExecException target("target");
    const TransExecException source(LONG_TEXT);
    EXPECT_FALSE(succeedsWith(0, [&target, &source] { target = source; }));
    EXPECT_STREQ(target.what(), "target");
    EXPECT_EQ(target.getParameterCount(), 1U);
    EXPECT_EQ(target.getReserveBuffer()[4095], '\0');
}

}  // namespace
