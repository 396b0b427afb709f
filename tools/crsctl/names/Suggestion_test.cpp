#include "tools/crsctl/names/Suggestion.h"

#include <gtest/gtest.h>

#include "names/CrsName.h"
#include "tests/support/NameTable.h"

namespace crsctl {
namespace {

using TestSupport::NameRow;

bool isUnderstood(const std::string& name) {
    using CoordinateTransformation::NameExplanation;
    const auto acceptNothing = [](const char* /*property*/) { return false; };
    return CoordinateTransformation::explainName(name, acceptNothing).fault == NameExplanation::Fault::NONE;
}

TEST(ASuggestion, IsTheOneChangeThatHelps) {
    for (const NameRow& row : TestSupport::nameRowsWith("suggestion")) {
        SCOPED_TRACE(row.where());
        const auto suggestion = suggest(row["name"], {}, isUnderstood);
        EXPECT_EQ(suggestion ? suggestion->name : "none", row["suggestion"]);
        EXPECT_FALSE(suggestion && suggestion->change.empty());
    }
}

TEST(ASuggestion, IsMadeForNoLongName) { EXPECT_FALSE(suggest(std::string(5000, 'x'), {}, isUnderstood)); }

TEST(ASuggestion, KnowsTheNamesOfTheConfiguration) {
    const auto isConfigured = [](const std::string& name) { return name == "UTM32" || name == "CRS:84"; };
    EXPECT_EQ(suggest("utm32", {"UTM32"}, isConfigured)->name, "UTM32");
    EXPECT_EQ(suggest("urn:ogc:def:crs:OGC:1.3:CRS84", {"UTM32"}, isConfigured)->name, "CRS:84");
    EXPECT_EQ(suggest("crs:84", {"CRS:84"}, isConfigured)->name, "CRS:84");
}

TEST(ASuggestion, IsMadeOnlyWhenTheServerAcceptsIt) {
    EXPECT_FALSE(suggest("epsg:4326", {"EPSG:4326"}, [](const std::string&) { return false; }));
}

TEST(ASuggestion, SaysWhatToChange) {
    EXPECT_EQ(suggest("epsg:4326", {}, isUnderstood)->change, "with the prefix in capitals");
    EXPECT_EQ(suggest("https://www.opengis.net/def/crs/EPSG/0/4326", {}, isUnderstood)->change,
              "with http in place of https");
    EXPECT_EQ(suggest("urn:ogc:def:crs:EPSG:4326", {}, isUnderstood)->change, "with the missing colon before the code");
}

}  // namespace
}  // namespace crsctl
