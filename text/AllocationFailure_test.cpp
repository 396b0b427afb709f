// A separate program, because it replaces the global allocation functions.

#include "tests/support/AllocationFailure.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "text/InitFile.h"
#include "text/QuotedCsv.h"

namespace CoordinateTransformation {
namespace {

using TestSupport::expectAllOrNothing;

// Lines that are too long for a string's internal buffer.
constexpr char INIT_FILE[] =
    "# A comment that no small buffer holds\n"
    "<4326> +proj=longlat +datum=WGS84 # another comment\n"
    "       +title=a line that no small buffer holds <>\n"
    "<a-code-that-no-small-buffer-holds> +proj=longlat +ellps=GRS80 +no_defs <>\n"
    "<31467> +proj=tmerc +lat_0=0 +lon_0=9 +k=1 +x_0=3500000 +ellps=bessel <>\n";

// Each definition with its line number.
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

TEST(QuotedCsvAllocationFailureTest, ReadsEverythingOrFails) {
    const std::string text = "a cell that no small buffer holds,\"another, with \"\"quotes\"\" inside\"\nand a third\n";
    const std::vector<std::string> expected = {"a cell that no small buffer holds", "another, with \"quotes\" inside",
                                               "and a third"};
    std::vector<std::string> read;
    const auto readAll = [&text, &read] {
        read.clear();
        QuotedCsv reader(text, 2);
        for (std::vector<std::string> cells; reader.readRecord(cells);)
            read.insert(read.end(), cells.begin(), cells.end());
    };
    EXPECT_GT(expectAllOrNothing(readAll, [&] { return read == expected; }), 5);
}

}  // namespace
}  // namespace CoordinateTransformation
