#include "tools/crsctl/Output.h"

#include <gtest/gtest.h>

namespace crsctl {
namespace {

TEST(AJsonText, MarksObjectsWithReplacedBytes) {
    EXPECT_EQ(serialisedInLine({{"a", "\xFF\n"}}), "{\"a\":\"\xEF\xBF\xBD\\n\",\"bytesReplaced\":true}");
    EXPECT_EQ(serialised(Json{{"b", 1}, {"a", 2}}), "{\n  \"b\": 1,\n  \"a\": 2\n}\n");
    EXPECT_EQ(serialised(Json::array({{{"a", "\xC3\xBC"}}, {{"a", {{"b", "\xFC"}}}}})),
              "[\n  {\n    \"a\": \"\xC3\xBC\"\n  },\n  {\n    \"a\": {\n      \"b\": \"\xEF\xBF\xBD\"\n    },\n"
              "    \"bytesReplaced\": true\n  }\n]\n");
}

TEST(AJsonText, ReplacesBytesThatAreNotUtf8) {
    bool replaced = false;
    EXPECT_EQ(quotedJson("a\"b", replaced), "\"a\\\"b\"");
    EXPECT_FALSE(replaced);
    EXPECT_EQ(quotedJson("\xFF", replaced), "\"\xEF\xBF\xBD\"");
    EXPECT_TRUE(replaced);
}

}  // namespace
}  // namespace crsctl
