// A program of its own: it replaces the global allocation functions.

#include "tests/support/AllocationFailure.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "text/InitFile.h"

namespace CoordinateTransformation {
namespace {

using TestSupport::succeedsWithout;

// Lines too long to be kept without an allocation.
constexpr char INIT_FILE[] =
    "# A comment that no small buffer holds\n"
    "<4326> +proj=longlat +datum=WGS84 # another comment\n"
    "       +title=a line that no small buffer holds <>\n"
    "<a-code-that-no-small-buffer-holds> +proj=longlat +ellps=GRS80 +no_defs <>\n"
    "<31467> +proj=tmerc +lat_0=0 +lon_0=9 +k=1 +x_0=3500000 +ellps=bessel <>\n";

bool isSame(const InitFileDefinition& a, const InitFileDefinition& b) {
    return a.code == b.code && a.text == b.text && a.line == b.line;
}

bool areSame(const std::vector<InitFileDefinition>& a, const std::vector<InitFileDefinition>& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (!isSame(a[i], b[i])) return false;
    return true;
}

TEST(InitFileTextAllocationFailureTest, ReadsEverythingOrFails) {
    const std::string text = INIT_FILE;
    const std::vector<InitFileDefinition> expected = readInitFileText(text);
    EXPECT_EQ(expected.size(), 3U);
    int allocations = 0;
    for (bool succeeded = false; !succeeded; ++allocations) {
        std::vector<InitFileDefinition> read;
        succeeded = succeedsWithout(allocations, [&] { read = readInitFileText(text); });
        EXPECT_TRUE(!succeeded || areSame(read, expected)) << "without allocation " << allocations;
    }
    EXPECT_GT(allocations, 10);
}

}  // namespace
}  // namespace CoordinateTransformation
