#include <cstddef>
#include <gtest/gtest.h>
#include <string>

#include "QuarvelSrv/SrsFormattingOptions.h"
#include "creation/CrsNameSyntax.h"
#include "tests/support/FakeCrs.h"

namespace CoordinateTransformation {
namespace {

using namespace std::string_literals;

constexpr std::size_t MEGABYTE = 1 << 20;
const std::string HEAD = "urn:EPSG:geographicCRS:";

TEST(Wfs11UrnTest, LeavesWhateverFollowsTheHeadAsItStands) {
    const std::string codes[] = {"4326",
                                 "",
                                 " 4326 ",
                                 "abc",
                                 "27700*5701",
                                 "4326:5783",
                                 HEAD + "4326",
                                 "43\0"s,
                                 "\xEF\xBC\x94",
                                 std::string(MEGABYTE, '0'),
                                 std::string(MEGABYTE, ':')};
    for (const std::string& code : codes) EXPECT_EQ(parseWfs11Urn(HEAD + code), code) << code.substr(0, 40);
}

TEST(Wfs11UrnTest, RefusesANameThatDoesNotBeginWithTheHead) {
    const std::string refused[] = {
        "",
        "4326",
        "urn:EPSG:geographicCRS",
        "urn:EPSG:geographicCRS;4326",
        "URN:EPSG:geographicCRS:4326",
        "urn:epsg:geographicCRS:4326",
        "urn:EPSG:geographiccrs:4326",
        "urn:EPSG:GeographicCRS:4326",
        "urn:EPSG:projectedCRS:25832",
        " " + HEAD + "4326",
        "x" + HEAD + "4326",
        "urn:ogc:def:crs:EPSG::4326",
        "urn/EPSG/geographicCRS/4326",
        "urn:EPSG:geographic\0CRS:4326"s,
        "\0"s + HEAD + "4326",
        std::string(MEGABYTE, ':'),
        std::string(MEGABYTE, 'u'),
    };
    for (const std::string& name : refused) EXPECT_EQ(parseWfs11Urn(name), std::nullopt) << name.substr(0, 40);
}

TEST(Wfs11UrnRoundTripTest, ReadsThePrefixedCodeThatIsWritten) {
    const TestSupport::FakeTransformer transformer;
    const TestSupport::FakeCreator creator;
    const TestSupport::FakeCrs crs(creator, transformer, 4326, 0);
    const QuarvelSrv::SrsFormattingOptions prefixed{"", HEAD, 0};
    EXPECT_EQ(parseWfs11Urn(crs.getAliasOrAsOgcURN(&prefixed, false)), "4326");
}

}  // namespace
}  // namespace CoordinateTransformation
