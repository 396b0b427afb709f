#include "tools/projdir/GridFiles.h"

#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"
#include "tools/projdir/OutputFile.h"

namespace ProjDir {
namespace {

// The examples of FIPS 180-2, and of a text longer than what is read at once the figure of sha256sum.
TEST(GridFilesTest, ComputesChecksums) {
    const TestSupport::TemporaryDirectory work;
    EXPECT_EQ(computeSha256(work.write("abc", "abc")),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(computeSha256(work.write("empty", "")),
              "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(computeSha256(work.write("million", std::string(1000000, 'a'))),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
    EXPECT_THROW(computeSha256(work.file("none")), OutputError);
}

CrsOutcome makeOutcome(ShiftKind kind, const char* source) {
    CrsOutcome outcome;
    outcome.definition = ClassicDefinition{};
    outcome.definition->shift.kind = kind;
    outcome.definition->shift.source = source;
    return outcome;
}

TEST(GridFilesTest, ListsEachFileOnceAndNoOther) {
    const ProjContext context;
    const auto files = listGridFiles(
        context,
        {makeOutcome(ShiftKind::GRID, "b_not_there.tif"), makeOutcome(ShiftKind::GRID, "a_not_there.tif"),
         makeOutcome(ShiftKind::GRID, "b_not_there.tif"), makeOutcome(ShiftKind::PUBLISHED, "EPSG:1"), CrsOutcome{}});
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(writeGridFiles(files), "file,sha256\na_not_there.tif,\nb_not_there.tif,\n");
    EXPECT_EQ(writeMissingGrids(files),
              "grid file not installed: a_not_there.tif\ngrid file not installed: b_not_there.tif\n");
}

TEST(GridFilesTest, WritesTheChecksumOfWhatIsThere) {
    EXPECT_EQ(writeGridFiles({{"a.tif", "0f"}}), "file,sha256\na.tif,0f\n");
    EXPECT_EQ(writeMissingGrids({{"a.tif", "0f"}}), "");
}

}  // namespace
}  // namespace ProjDir
