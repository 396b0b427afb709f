#include "tools/crsctl/text/Printable.h"

#include <gtest/gtest.h>

#include "tools/crsctl/text/Json.h"
#include "tools/crsctl/text/Table.h"

namespace crsctl {
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

TEST(AJsonText, SaysWhereBytesWereReplaced) {
    EXPECT_EQ(serialisedInLine({{"a", "\xFF\n"}}), "{\"a\":\"\xEF\xBF\xBD\\n\",\"bytesReplaced\":true}");
    EXPECT_EQ(serialised(Json{{"b", 1}, {"a", 2}}), "{\n  \"b\": 1,\n  \"a\": 2\n}\n");
    EXPECT_EQ(serialised(Json::array({{{"a", "\xC3\xBC"}}, {{"a", {{"b", "\xFC"}}}}})),
              "[\n  {\n    \"a\": \"\xC3\xBC\"\n  },\n  {\n    \"a\": {\n      \"b\": \"\xEF\xBF\xBD\"\n    },\n"
              "    \"bytesReplaced\": true\n  }\n]\n");
}

TEST(AJsonText, QuotesWhatIsNotUtf8) {
    bool replaced = false;
    EXPECT_EQ(quotedJson("a\"b", replaced), "\"a\\\"b\"");
    EXPECT_FALSE(replaced);
    EXPECT_EQ(quotedJson("\xFF", replaced), "\"\xEF\xBF\xBD\"");
    EXPECT_TRUE(replaced);
}

}  // namespace
}  // namespace crsctl
