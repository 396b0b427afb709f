#include "tools/projdir/Generation.h"

#include <locale>

#include <gtest/gtest.h>

#include "tools/projdir/CodeList.h"
#include "tools/projdir/DirectoryText.h"

namespace ProjDir {
namespace {

std::string makeText(unsigned int threads) {
    const ProjContext context;
    const auto list =
        selectListed(readRegistry(context),
                     {{4326, ""}, {31466, ""}, {31467, ""}, {4314, ""}, {27700, ""}, {2334, ""}, {5701, ""}}, false);
    Tools::ProgressBar progress(stderr, "Test", list.size());
    const auto outcomes = makeAll(list, {}, threads, progress);
    return writeInitFile(readRegistryVersion(context), outcomes) + writeAxisOrderFile(outcomes);
}

TEST(GenerationTest, DoesNotDependOnTheNumberOfThreads) {
    const std::string expected = makeText(1);
    EXPECT_EQ(makeText(2), expected);
    EXPECT_EQ(makeText(4), expected);
}

struct CommaAndGrouping : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(GenerationTest, DoesNotDependOnTheLocale) {
    const std::string expected = makeText(1);
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new CommaAndGrouping));
    const std::string actual = makeText(1);
    std::locale::global(before);
    EXPECT_EQ(actual, expected);
}

TEST(GenerationTest, KeepsTheOrderOfTheList) {
    const ProjContext context;
    const auto list = selectListed(readRegistry(context), {{4258, ""}, {4326, ""}, {25832, ""}}, false);
    Tools::ProgressBar progress(stderr, "Test", list.size());
    const auto outcomes = makeAll(list, {}, 2, progress);
    ASSERT_EQ(outcomes.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(outcomes[i].crs.code, list[i].code);
}

}  // namespace
}  // namespace ProjDir
