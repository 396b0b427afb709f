#include "tools/projdir/HtmlReport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ProjDir {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// The element that begins with the tag, up to the end of the next script.
std::string partFrom(const std::string& page, const std::string& tag) {
    const std::size_t start = page.find(tag);
    return page.substr(start, page.find("</script>", start) - start);
}

TEST(HtmlReportTest, HoldsDataStyleScriptAndCoastline) {
    const std::string page = writeHtmlReport("{\"crs\": [1]}");
    EXPECT_THAT(page, StartsWith("<!DOCTYPE html>"));
    EXPECT_THAT(partFrom(page, "<script type=\"application/json\" id=\"data\">"), HasSubstr("{\"crs\": [1]}"));
    EXPECT_THAT(page, AllOf(HasSubstr("prefers-color-scheme: dark"), HasSubstr("@media print"),
                            HasSubstr("\"use strict\";"), HasSubstr(" d=\"M163 1686l")));
    EXPECT_THAT(page, Not(HasSubstr("<!--[")));
}

TEST(HtmlReportTest, NeedsNothingFromElsewhere) {
    const std::string page = writeHtmlReport("{}");
    EXPECT_THAT(page, AllOf(Not(HasSubstr(" src=")), Not(HasSubstr("url(")), Not(HasSubstr("@import")),
                            Not(HasSubstr("<link")), Not(HasSubstr("fetch("))));
    EXPECT_THAT(page, HasSubstr("default-src 'none'"));
}

TEST(HtmlReportTest, KeepsWhatLooksLikeMarkupInTheData) {
    const std::string page = writeHtmlReport("{\"name\": \"</script><script>alert(1)<!--[STYLE]-->\"}");
    EXPECT_THAT(page, HasSubstr("\"\\u003c/script>\\u003cscript>alert(1)\\u003c!--[STYLE]-->\""));
    EXPECT_THAT(page, Not(HasSubstr("<script>alert")));
}

}  // namespace
}  // namespace ProjDir
