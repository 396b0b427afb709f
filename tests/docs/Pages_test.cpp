#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/Page.h"

// What holds for all pages.
namespace DocsTest {
namespace {

const std::filesystem::path DOCS = COORDTRANS_SOURCE_DIR "/docs";

// The kinds of block that a test compiles, runs or reads, with the kinds whose output a "text" block shows.
const std::set<std::string> CHECKED_ON_EVERY_PAGE = {"cpp", "cpp fragment", "xml", "xml refused"};
const std::set<std::string> CHECKED_ON_THE_FIRST_STEPS = {"sh", "cmake"};
const std::set<std::string> FOLLOWED_BY_OUTPUT = {"cpp", "xml refused", "sh"};

bool isChecked(const Page& page, std::size_t i) {
    const std::string& info = page.blocks[i].info;
    if (CHECKED_ON_EVERY_PAGE.count(info) != 0) return true;
    if (CHECKED_ON_THE_FIRST_STEPS.count(info) != 0) return page.name == "getting-started.md";
    return info == "text" && i > 0 && FOLLOWED_BY_OUTPUT.count(page.blocks[i - 1].info) != 0;
}

TEST(PagesTest, EveryBlockIsChecked) {
    for (const Page& page : readPages())
        for (std::size_t i = 0; i < page.blocks.size(); ++i)
            EXPECT_TRUE(isChecked(page, i)) << page.name << ":" << page.blocks[i].line << ": " << page.blocks[i].info;
}

TEST(PagesTest, EveryCppBlockIsCompiled) {
    int blocks = 0;
    for (const Page& page : readPages())
        for (const CodeBlock& block : page.blocks) blocks += block.info.compare(0, 3, "cpp") == 0 ? 1 : 0;
    EXPECT_EQ(blocks, DOCS_CPP_BLOCKS);
    EXPECT_GT(blocks, 0);
}

// A table is either read by a test, which knows it by its first title, or for the reader alone; a mistyped title
// must not make a checked table an unchecked one.
TEST(PagesTest, EveryPageHasTheTablesThatTestsRead) {
    const std::map<std::string, std::map<std::string, std::size_t>> expected = {
        {"names-in.md", {{"name", 6}, {"refused name", 2}}},
        {"names-out.md", {{"call", 2}}},
        {"axis-order.md", {{"name", 2}}},
        {"configuration.md", {{"name", 3}, {"refused name", 2}}},
        {"failures.md", {{"failure", 3}}},
        {"limitations.md", {{"name", 1}}},
    };
    for (const Page& page : readPages()) {
        const auto titles = expected.find(page.name);
        for (const char* const title : {"name", "refused name", "call", "failure"}) {
            const bool listed = titles != expected.end() && titles->second.count(title) != 0;
            EXPECT_EQ(tablesOf(page, title).size(), listed ? titles->second.at(title) : 0U)
                << page.name << " " << title;
        }
    }
}

TEST(PagesTest, LinksLeadSomewhere) {
    for (const Page& page : readPages())
        for (const std::string& link : page.links)
            EXPECT_TRUE(std::filesystem::exists(DOCS / link.substr(0, link.find('#')))) << page.name << ": " << link;
}

TEST(PagesTest, TheIndexNamesEveryPage) {
    const Page index = readPage("README.md");
    for (const auto& entry : std::filesystem::directory_iterator(DOCS)) {
        const std::string name = entry.path().filename().string();
        if (entry.path().extension() != ".md" || name == "README.md") continue;
        EXPECT_EQ(std::count(index.links.begin(), index.links.end(), name), 1) << name;
    }
}

}  // namespace
}  // namespace DocsTest
