// A program of its own: it replaces the global allocation functions.

#include "tests/support/AllocationFailure.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "text/InitFile.h"

namespace CoordinateTransformation {
namespace {

using TestSupport::expectAllOrNothing;

// Lines too long to be kept without an allocation.
constexpr char INIT_FILE[] =
    "# A comment that no small buffer holds\n"
    "<4326> +proj=longlat +datum=WGS84 # another comment\n"
    "       +title=a line that no small buffer holds <>\n"
    "<a-code-that-no-small-buffer-holds> +proj=longlat +ellps=GRS80 +no_defs <>\n"
    "<31467> +proj=tmerc +lat_0=0 +lon_0=9 +k=1 +x_0=3500000 +ellps=bessel <>\n";

// Each definition with its line.
std::vector<std::string> definitionsIn(const std::string& text) {
    std::vector<std::string> definitions;
    for (const InitFileDefinition& definition : readInitFileText(text))
        definitions.push_back(std::to_string(definition.line) + definition.code + definition.text);
    return definitions;
}

TEST(InitFileAllocationFailureTest, ReadsEverythingOrFails) {
    const std::string text = INIT_FILE;
    const std::vector<std::string> expected = definitionsIn(text);
    EXPECT_EQ(expected.size(), 3U);
    std::vector<std::string> read;
    EXPECT_GT(expectAllOrNothing([&] { read = definitionsIn(text); }, [&] { return read == expected; }), 10);
}

}  // namespace
}  // namespace CoordinateTransformation
