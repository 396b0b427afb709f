#include "tools/projdir/EllipsoidText.h"

#include <gtest/gtest.h>

#include "tools/projdir/Registry.h"

namespace ProjDir {
namespace {

struct NamedFigure {
    unsigned int code;
    const char* text;
};

class EllipsoidTextTest : public testing::TestWithParam<NamedFigure> {};

TEST_P(EllipsoidTextTest, NamesTheFigureOfACrs) {
    const ProjContext context;
    EXPECT_EQ(writeEllipsoid(readEllipsoid(context, createCrs(context, GetParam().code).get())), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Crs, EllipsoidTextTest,
                         testing::Values(NamedFigure{4326, "+ellps=WGS84"}, NamedFigure{4258, "+ellps=GRS80"},
                                         NamedFigure{27700, "+ellps=airy"}, NamedFigure{31467, "+ellps=bessel"},
                                         NamedFigure{4267, "+ellps=clrk66"}, NamedFigure{27572, "+ellps=clrk80ign"},
                                         NamedFigure{4978, "+ellps=WGS84"},
                                         NamedFigure{2001, "+a=6378249.145 +rf=293.465"},
                                         NamedFigure{30200, "+a=6378293.645208759 +rf=294.260676369"}));

TEST(EllipsoidTextTest, WritesASphereByItsRadius) {
    EXPECT_EQ(writeEllipsoid({6371228, 6371228}), "+R=6371228");
    EXPECT_EQ(writeEllipsoid({6370997, 6370997}), "+ellps=sphere");
}

// A millimetre on the ground is another figure, rounding is not.
TEST(EllipsoidTextTest, NamesOnlyTheVerySameFigure) {
    EXPECT_EQ(writeEllipsoid({6378137, 6356752.314245179}), "+ellps=WGS84");
    EXPECT_EQ(writeEllipsoid({6378137, 6356752.3142452}), "+ellps=WGS84");
    EXPECT_EQ(writeEllipsoid({6378137, 6356752.315}).substr(0, 18), "+a=6378137 +rf=298");
}

}  // namespace
}  // namespace ProjDir
