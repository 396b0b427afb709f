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

struct Change {
    const char* left;
    const char* right;
    std::size_t distance;
};

TEST(TheEditDistance, IsTheSameInBothDirections) {
    for (const Change& change : {Change{"a", "", 1}, Change{"a", "b", 1}, Change{"ab", "ba", 2}, Change{"ab", "b", 1},
                                 Change{"abc", "axc", 1}, Change{"abc", "abxc", 1}, Change{"abcd", "bcde", 2},
                                 Change{"sunday", "saturday", 3}, Change{"intention", "execution", 5}}) {
        EXPECT_EQ(editDistance(change.left, change.right), change.distance) << change.left << " " << change.right;
        EXPECT_EQ(editDistance(change.right, change.left), change.distance) << change.left << " " << change.right;
    }
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

TEST(APrintableText, EscapesEveryControlCharacterOfAscii) {
    EXPECT_EQ(printable(std::string_view("\0\x01\x1F\x7F", 4)), "\\x00\\x01\\x1F\\x7F");
    EXPECT_EQ(printable(" ~\x80\xFF"), " ~\x80\xFF");
}

TEST(APrintableText, IsCutAfter120BytesUnlessTheCallerHasAnotherLimit) {
    EXPECT_EQ(printable(std::string(120, 'x')), std::string(120, 'x'));
    EXPECT_EQ(printable(std::string(121, 'x')), std::string(120, 'x') + "...");
    EXPECT_EQ(printable(std::string(121, 'x'), 121), std::string(121, 'x'));
    EXPECT_EQ(printable("abc", 0), "...");
}

// The limit is that of the text, so an escape does not shorten it.
TEST(APrintableText, CountsAControlCharacterAsOneByte) {
    EXPECT_EQ(printable("\n\n\n", 3), "\\n\\n\\n");
    EXPECT_EQ(printable("\n\n\nx", 3), "\\n\\n\\n...");
}

TEST(Padding, LeavesATextOfTheWidthUnchanged) {
    EXPECT_EQ(padded("abc", 3), "abc");
    EXPECT_EQ(padded("", 2), "  ");
    EXPECT_EQ(padded("\xE2\x82\xAC\xF0\x9F\x8C\x8D", 3), "\xE2\x82\xAC\xF0\x9F\x8C\x8D ");
}

TEST(ATable, HasNoLineThatEndsInBlanks) {
    EXPECT_EQ(alignedColumns({{"a", "b"}, {"ccc", ""}, {"", "d"}}), "a    b\nccc\n     d\n");
    EXPECT_EQ(alignedColumns({{"", ""}, {}}, "  "), "\n\n");
    EXPECT_EQ(alignedColumns({{"a b", "c"}}), "a b  c\n");
}

TEST(TheClosestWord, DiffersInAThirdOfTheMistypedWord) {
    EXPECT_EQ(closest("abcdef", {"abcdxx"}), "abcdxx");
    EXPECT_EQ(closest("abcdef", {"abcxxx"}), std::nullopt);
    EXPECT_EQ(closest("abcde", {"abcxx"}), std::nullopt);
    EXPECT_EQ(closest("abcde", {"abcdx"}), "abcdx");
    EXPECT_EQ(closest("a", {"b"}), "b");
    EXPECT_EQ(closest("", {"b"}), "b");
    EXPECT_EQ(closest("", {"bc"}), std::nullopt);
}

TEST(TheClosestWord, IsTheFirstOfSeveral) {
    EXPECT_EQ(closest("cat", {"dog", "car", "cab"}), "car");
    EXPECT_EQ(closest("cat", {"car", "CAT"}), "CAT");
}

TEST(SmallLetters, AreMadeOfAsciiCapitalsOnly) {
    EXPECT_EQ(smallLetters("AZaz"), "azaz");
    EXPECT_EQ(smallLetters("@[`{09 \xC3\x84"), "@[`{09 \xC3\x84");
    EXPECT_EQ(smallLetters(""), "");
}
}  // namespace
}  // namespace Tools
