#include "tests/support/Page.h"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

// The reader of the pages itself: what it overlooked would go unchecked.
namespace DocsTest {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

TEST(PageTest, FindsBlocksWithTheirInfo) {
    const Page page = parsePage("p", "text\n```cpp fragment\na;\n\nb;\n```\n```\n| no | table |\n```\n");
    ASSERT_EQ(page.blocks.size(), 2U);
    EXPECT_EQ(page.blocks[0].info, "cpp fragment");
    EXPECT_EQ(page.blocks[0].text, "a;\n\nb;\n");
    EXPECT_EQ(page.blocks[0].line, 2U);
    EXPECT_EQ(page.blocks[1].info, "");
    EXPECT_THAT(page.tables, IsEmpty());
}

TEST(PageTest, FindsTablesWithTheConfigurationAboveThem) {
    const Page page = parsePage("p",
                                "```xml\n<a/>\n```\n```xml refused\n<b/>\n```\n| name | why |\n|---|---|\n"
                                "| `a|b ` | so `it` is |\n\n| other |\n|---|\n");
    ASSERT_EQ(page.tables.size(), 2U);
    EXPECT_THAT(page.tables[0].titles, ElementsAre("name", "why"));
    ASSERT_EQ(page.tables[0].rows.size(), 1U);
    EXPECT_THAT(page.tables[0].rows[0], ElementsAre(Pair("name", "a|b "), Pair("why", "so `it` is")));
    EXPECT_EQ(page.tables[0].configuration, "<a/>\n");
    EXPECT_EQ(tablesOf(page, "other").size(), 1U);
    EXPECT_THAT(tablesOf(page, "why"), IsEmpty());
}

TEST(PageTest, FindsLinksOutsideBlocks) {
    const Page page = parsePage("p", "[a](b.md) and [c](d)\n| [e](f) |\n```text\n[g](h)\n```\n");
    EXPECT_THAT(page.links, ElementsAre("b.md", "d", "f"));
}

TEST(PageTest, RefusesWhatItCannotRead) {
    EXPECT_THROW(parsePage("p", "```cpp\na;\n"), std::runtime_error);
    EXPECT_THROW(parsePage("p", "| a | b |\n|---|---|\n| c |\n"), std::runtime_error);
    EXPECT_THROW(readPage("no-such-page.md"), std::runtime_error);
}

}  // namespace
}  // namespace DocsTest
