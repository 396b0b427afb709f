#include "creation/ProjError.h"

#include <gtest/gtest.h>
#include <string>

#include "CoordinateTransformation/Misconfigured.h"
#include "proj/classic/ClassicProj.h"

namespace CoordinateTransformation {
namespace {

TEST(ProjErrorTest, IsNoneWhenItsNumberIsZero) { EXPECT_NO_THROW(requireNoProjError(0, "/proj")); }

TEST(ProjErrorTest, IsReportedWithTheDirectoryAndProjsTextJoined) {
    for (const int error : {1027, 1029, -1}) {
        const std::string reason = ClassicProj::pj_strerrno(error);
        ASSERT_NE(reason, "") << error;
        try {
            requireNoProjError(error, "/proj");
            ADD_FAILURE() << error << " passed";
        } catch (const Misconfigured& failure) {
            EXPECT_EQ(failure.getDetailedMessage(),
                      "Proj4 reported an error using configuration directory /proj" + reason);
            EXPECT_EQ(failure.getServiceExceptionCode(), "qvConfigurationError");
        }
    }
}

}  // namespace
}  // namespace CoordinateTransformation
