#include <string>

#include <boost/property_tree/xml_parser.hpp>
#include <gtest/gtest.h>

#include "tests/support/DocsServer.h"
#include "tests/support/Page.h"

// Every fragment that stands on a page.
namespace DocsTest {
namespace {

// "class: text", as the pages write it.
std::string refusalOf(const std::string& fragment) {
    try {
        const Raised raised = raisedBy([&fragment] { givenServer(fragment); });
        return raised.type + ": " + raised.text + "\n";
    } catch (const boost::property_tree::xml_parser_error& failure) {
        return std::string("boost::property_tree::xml_parser_error: ") + failure.what() + "\n";
    }
}

TEST(FragmentTest, IsAcceptedWhereThePageDoesNotSayOtherwise) {
    int fragments = 0;
    for (const Page& page : readPages()) {
        for (const CodeBlock& block : page.blocks) {
            if (block.info != "xml") continue;
            ++fragments;
            EXPECT_NO_THROW(EXPECT_FALSE(givenServer(block.text).config->getConfiguredCrs()->empty()))
                << page.name << ":" << block.line;
        }
    }
    EXPECT_GT(fragments, 0);
}

TEST(FragmentTest, IsRefusedWithTheTextBelowIt) {
    int fragments = 0;
    for (const Page& page : readPages()) {
        for (std::size_t i = 0; i < page.blocks.size(); ++i) {
            if (page.blocks[i].info != "xml refused") continue;
            ++fragments;
            ASSERT_LT(i + 1, page.blocks.size());
            ASSERT_EQ(page.blocks[i + 1].info, "text") << page.name << ":" << page.blocks[i].line;
            EXPECT_EQ(refusalOf(page.blocks[i].text), page.blocks[i + 1].text) << page.name;
        }
    }
    EXPECT_GT(fragments, 0);
}

}  // namespace
}  // namespace DocsTest
