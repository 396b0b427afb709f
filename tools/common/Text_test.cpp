#include "tools/common/Text.h"

#include <gtest/gtest.h>

namespace Tools {
namespace {

TEST(APrintableText, HasNoControlCharacters) {
    EXPECT_EQ(printable("plain, t\xC3\xB6o"), "plain, t\xC3\xB6o");
    EXPECT_EQ(printable(std::string("a\n\t\r\x1B\x7F\0", 7)), "a\\n\\t\\r\\x1B\\x7F\\x00");
    EXPECT_EQ(printable(""), "");
}

TEST(APrintableText, IsCutBetweenCharacters) {
    EXPECT_EQ(printable("abcdef", 3), "abc...");
    EXPECT_EQ(printable("abc", 3), "abc");
    EXPECT_EQ(printable("ab\xC3\xB6"
                        "cd",
                        3),
              "ab...");
    EXPECT_EQ(printable("\x80\x80\x80", 2), "...");
}

TEST(Padding, CountsCharacters) {
    EXPECT_EQ(padded("\xC3\xB6", 3), "\xC3\xB6  ");
    EXPECT_EQ(padded("abcd", 3), "abcd");
}

TEST(ATable, AlignsItsColumns) {
    EXPECT_EQ(alignedColumns({{"a", "bb"}, {"\xC3\xB6\xC3\xB6\xC3\xB6", "c"}, {"d"}}, " "),
              " a    bb\n \xC3\xB6\xC3\xB6\xC3\xB6  c\n d\n");
    EXPECT_EQ(alignedColumns({}), "");
}

TEST(ANumber, IsGroupedByThousands) {
    EXPECT_EQ(grouped(0), "0");
    EXPECT_EQ(grouped(999), "999");
    EXPECT_EQ(grouped(1000), "1,000");
    EXPECT_EQ(grouped(12345678), "12,345,678");
    EXPECT_EQ(grouped(18446744073709551615U), "18,446,744,073,709,551,615");
}

TEST(TheEditDistance, CountsChangesButNotCapitals) {
    EXPECT_EQ(editDistance("", ""), 0U);
    EXPECT_EQ(editDistance("", "abc"), 3U);
    EXPECT_EQ(editDistance("EPSG:4326", "epsg:4326"), 0U);
    EXPECT_EQ(editDistance("trasform", "transform"), 1U);
    EXPECT_EQ(editDistance("kitten", "sitting"), 3U);
}

TEST(TheClosestWord, IsFoundForAMistypedOne) {
    const std::vector<std::string> known = {"resolve", "transform", "check", "find"};
    EXPECT_EQ(closest("trasform", known), "transform");
    EXPECT_EQ(closest("Check", known), "check");
    EXPECT_EQ(closest("fnid", known), std::nullopt);
    EXPECT_EQ(closest("fin", known), "find");
    EXPECT_EQ(closest("frob", known), std::nullopt);
    EXPECT_EQ(closest("", {}), std::nullopt);
}

}  // namespace
}  // namespace Tools
