#include "proj/AxisOrderTable.h"

#include <boost/filesystem/exception.hpp>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "CoordinateTransformation/Misconfigured.h"
#include "QSHelpers/FileNotFoundException.h"
#include "tests/support/GroupingLocale.h"
#include "tests/support/TemporaryDirectory.h"

namespace CoordinateTransformation {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr bool EAST_NORTH = true;
constexpr bool NORTH_EAST = false;
const std::string WRONG_CELLS =
    "row does contain less or more than two elements which are separated with a \";\" character";
const std::string WRONG_AXIS_ORDER = "only the values \"en\" or \"ne\" are allowed";

std::string wrongCode(const std::string& cell) { return cell + " is not a valid EPSG code"; }

class AxisOrderTableTest : public testing::Test {
protected:
    AxisOrderTableTest() { axisOrderTable.clear(); }
    ~AxisOrderTableTest() override { axisOrderTable.clear(); }

    void load(const std::string& text) { loadAxisOrderTable(directory.write("epsg-axisorder.csv", text)); }
    void expectFailure(const std::string& text, int line, const std::string& fault) {
        SCOPED_TRACE(text.substr(0, 60));
        const std::string path = directory.write("epsg-axisorder.csv", text);
        expectMisconfigured(path, "Error in AxisOrder configuration file \"" + path + "\", line " +
                                      std::to_string(line) + ": " + fault);
    }
    static void expectMisconfigured(const std::string& path, const std::string& message) {
        try {
            loadAxisOrderTable(path);
            ADD_FAILURE() << "loaded";
        } catch (const Misconfigured& error) {
            EXPECT_EQ(error.getDetailedMessage(), message);
            EXPECT_EQ(error.getServiceExceptionCode(), "qvConfigurationError");
        }
    }

    TestSupport::TemporaryDirectory directory;
};

TEST_F(AxisOrderTableTest, LoadsEveryLine) {
    load("4326;ne\n3857;en\n31467;ne\n");
    EXPECT_THAT(axisOrderTable, ElementsAre(Pair(3857, EAST_NORTH), Pair(4326, NORTH_EAST), Pair(31467, NORTH_EAST)));
}

TEST_F(AxisOrderTableTest, LoadsTheFileThatIsDelivered) {
    loadAxisOrderTable(COORDTRANS_SOURCE_DIR "/data/proj/epsg-axisorder.csv");
    EXPECT_EQ(axisOrderTable.at(4326), NORTH_EAST);
    EXPECT_EQ(axisOrderTable.at(4979), NORTH_EAST);
    EXPECT_EQ(axisOrderTable.at(31467), NORTH_EAST);
    EXPECT_EQ(axisOrderTable.at(3857), EAST_NORTH);
    EXPECT_EQ(axisOrderTable.at(25832), EAST_NORTH);
    EXPECT_EQ(axisOrderTable.at(27700), EAST_NORTH);
}

TEST_F(AxisOrderTableTest, TrimsTheAxisOrderAndConvertsTheCodeAsItStands) {
    const struct {
        std::string line;
        unsigned int code;
        bool eastNorth;
    } accepted[] = {
        {"4326;ne", 4326, NORTH_EAST},
        {"4326;ne\r", 4326, NORTH_EAST},
        {"4326;ne;", 4326, NORTH_EAST},
        {"4326; \t\r en \t\r ", 4326, EAST_NORTH},
        {"+4326;en", 4326, EAST_NORTH},
        {" 4326;ne", 4326, NORTH_EAST},
        {"4326 ;ne", 4326, NORTH_EAST},
        {" + 4326 ;en", 4326, EAST_NORTH},
        {"0000004326;ne", 4326, NORTH_EAST},
        {std::string(1 << 20, '0') + "4326;ne" + std::string(1 << 20, ' '), 4326, NORTH_EAST},
        {"0;en", 0, EAST_NORTH},
        {"4294967295;ne", 4294967295, NORTH_EAST},
    };
    for (const auto& row : accepted) {
        axisOrderTable.clear();
        load(row.line + "\n");
        EXPECT_THAT(axisOrderTable, ElementsAre(Pair(row.code, row.eastNorth))) << row.line.substr(0, 40);
    }
}

TEST_F(AxisOrderTableTest, RefusesARowWithoutExactlyTwoCells) {
    const std::string refused[] = {"",
                                   "\r",
                                   " ",
                                   "4326",
                                   "4326;",
                                   ";",
                                   "4326;ne;x",
                                   "4326;;ne",
                                   "4326;ne;;",
                                   "4326,ne",
                                   "4326 ne",
                                   "# a comment",
                                   "code",
                                   "4326;ne\r3857;en",
                                   std::string(1 << 20, ';')};
    for (const std::string& line : refused) expectFailure(line + "\n", 2, WRONG_CELLS);
    EXPECT_THAT(axisOrderTable, IsEmpty());
}

TEST_F(AxisOrderTableTest, RefusesEveryOtherAxisOrder) {
    const std::string refused[] = {"NE",
                                   "EN",
                                   "Ne",
                                   "en ne",
                                   "n e",
                                   "e",
                                   "wn",
                                   "\"ne\"",
                                   "ne\0"s,
                                   "\0ne"s,
                                   "ne\v",
                                   "ne\xC2\xA0",
                                   "nee",
                                   "\xEF\xBD\x8E"
                                   "e",
                                   " \t\r"};
    for (const std::string& axisOrder : refused) expectFailure("4326;" + axisOrder + "\n", 2, WRONG_AXIS_ORDER);
    expectFailure(";;\n", 2, WRONG_AXIS_ORDER);
    expectFailure("code;axis order\n", 2, WRONG_AXIS_ORDER);
    EXPECT_THAT(axisOrderTable, IsEmpty());
}

TEST_F(AxisOrderTableTest, RefusesACodeThatIsNoNumber) {
    const std::string nines(1 << 20, '9');
    const std::string refused[] = {"abc",
                                   "",
                                   " ",
                                   "-4326",
                                   "++4326",
                                   "43 26",
                                   "4326x",
                                   "\t4326",
                                   "4326\t",
                                   "4326.0",
                                   "4e3",
                                   "0x10",
                                   "EPSG:4326",
                                   "\"4326\"",
                                   "# comment",
                                   "4294967296",
                                   "99999999999999999999",
                                   "43\0"
                                   "26"s,
                                   "4326\0"s,
                                   "\xEF\xBB\xBF"
                                   "4326",
                                   "\xFF",
                                   nines};
    for (const std::string& code : refused) expectFailure(code + ";ne\n", 2, wrongCode(code));
    EXPECT_THAT(axisOrderTable, IsEmpty());
}

TEST_F(AxisOrderTableTest, ReportsTheAxisOrderOfARowThatIsBadInBothCells) {
    expectFailure("abc;NE\n", 2, WRONG_AXIS_ORDER);
}

TEST_F(AxisOrderTableTest, CountsTheFirstLineAsLineTwo) {
    const struct {
        const char* text;
        int line;
        std::string fault;
    } refused[] = {
        {"4326;NE\n", 2, WRONG_AXIS_ORDER},
        {"4326;ne\n\n3857;en\n", 3, WRONG_CELLS},
        {"4326;ne\r\n3857;en\r\nabc;en\r\n", 4, wrongCode("abc")},
        {"4326;ne\n4326;en\n4326\n", 4, WRONG_CELLS},
    };
    for (const auto& row : refused) {
        axisOrderTable.clear();
        expectFailure(row.text, row.line, row.fault);
    }
}

TEST_F(AxisOrderTableTest, WritesTheLineNumberWhateverTheLocale) {
    const GroupingLocale grouping;
    std::string text;
    for (int i = 0; i < 1234; ++i) text += "4326;ne\n";
    expectFailure(text + "4326\n", 1236, WRONG_CELLS);
}

TEST_F(AxisOrderTableTest, DoesNotReadALineWithoutItsEnd) {
    load("4326;ne");
    EXPECT_THAT(axisOrderTable, IsEmpty());
    load("4326;ne\n3857;en");
    EXPECT_THAT(axisOrderTable, ElementsAre(Pair(4326, NORTH_EAST)));
}

TEST_F(AxisOrderTableTest, DoesNotCheckALineWithoutItsEnd) {
    load("4326;ne\nabc;xx;");
    EXPECT_THAT(axisOrderTable, ElementsAre(Pair(4326, NORTH_EAST)));
}

TEST_F(AxisOrderTableTest, LoadsNothingFromAnEmptyFile) {
    load("");
    EXPECT_THAT(axisOrderTable, IsEmpty());
}

TEST_F(AxisOrderTableTest, KeepsTheFirstAxisOrderOfACode) {
    load("4326;ne\n4326;en\n3857;en\n3857;ne\n 4326 ;en\n");
    EXPECT_THAT(axisOrderTable, ElementsAre(Pair(3857, EAST_NORTH), Pair(4326, NORTH_EAST)));
}

TEST_F(AxisOrderTableTest, ChecksTheLinesOfADuplicateToo) { expectFailure("4326;ne\n4326;xx\n", 3, WRONG_AXIS_ORDER); }

TEST_F(AxisOrderTableTest, ReadsAFileThatYieldedNothingAgain) {
    load("");
    load("4326;ne\n");
    EXPECT_THAT(axisOrderTable, ElementsAre(Pair(4326, NORTH_EAST)));
}

TEST_F(AxisOrderTableTest, DoesNotTouchTheFileAfterASuccessfulLoad) {
    load("4326;ne\n");
    load("not read\n");
    std::filesystem::remove(directory.file("epsg-axisorder.csv"));
    loadAxisOrderTable(directory.file("epsg-axisorder.csv"));
    EXPECT_THAT(axisOrderTable, ElementsAre(Pair(4326, NORTH_EAST)));
}

TEST_F(AxisOrderTableTest, KeepsTheRowsBeforeAFailureInForce) {
    expectFailure("4326;ne\n31467;ne\nabc;en\n3857;en\n", 4, wrongCode("abc"));
    load("25832;en\n");
    loadAxisOrderTable(directory.file("missing"));
    EXPECT_THAT(axisOrderTable, ElementsAre(Pair(4326, NORTH_EAST), Pair(31467, NORTH_EAST)));
}

TEST_F(AxisOrderTableTest, RepeatsAFailureThatLeftNothing) {
    expectFailure("abc;en\n", 2, wrongCode("abc"));
    expectFailure("abc;en\n", 2, wrongCode("abc"));
    load("4326;ne\n");
    EXPECT_THAT(axisOrderTable, ElementsAre(Pair(4326, NORTH_EAST)));
}

TEST_F(AxisOrderTableTest, ReportsAFileThatCannotBeOpened) {
    const std::string path = directory.file("missing");
    expectMisconfigured(path, "Unable to open AxisOrder file \"" + path + "\"");
    expectMisconfigured("", "Unable to open AxisOrder file \"\"");
}

// A regular file by its type whose first byte no process may read, the administrator's included.
TEST_F(AxisOrderTableTest, ReportsAReadThatBreaksOff) {
    const std::string path = directory.makeSymlink("epsg-axisorder.csv", "/proc/self/mem");
    expectMisconfigured(path, "Unable to read AxisOrder file \"" + path + "\": Input/output error");
    EXPECT_THAT(axisOrderTable, IsEmpty());
}

TEST_F(AxisOrderTableTest, ReportsAFileBeyondAllMeasure) {
    const std::string path = directory.write("epsg-axisorder.csv", "4326;ne\n");
    std::filesystem::resize_file(path, (std::uintmax_t{256} << 20) + 1);
    expectMisconfigured(path, "Unable to read AxisOrder file \"" + path + "\": it is larger than 256 MB");
    EXPECT_THAT(axisOrderTable, IsEmpty());
}

TEST_F(AxisOrderTableTest, ClosesTheFileOnEveryPath) {
    // The lowest free descriptor is the same before and after.
    const auto lowestFree = [] {
        const int descriptor = open("/dev/null", O_RDONLY);
        close(descriptor);
        return descriptor;
    };
    const std::string bad = directory.write("bad", "abc;en\n");
    const std::string good = directory.write("good", "4326;ne\n");
    const int before = lowestFree();
    ASSERT_GE(before, 0);
    EXPECT_THROW(loadAxisOrderTable(bad), Misconfigured);
    EXPECT_EQ(lowestFree(), before);
    loadAxisOrderTable(good);
    EXPECT_EQ(lowestFree(), before);
}

class RequireRegularFileTest : public testing::Test {
protected:
    static void expectNotFound(const std::string& path) {
        try {
            requireRegularFile(path);
            ADD_FAILURE() << path << " passed";
        } catch (const QSHelpers::FileNotFoundException& error) {
            EXPECT_EQ(error.getDetailedMessage(), "File \"" + path + "\" not found!\"");
            EXPECT_EQ(error.getServiceExceptionCode(), "qvFileNotFound");
        }
    }

    TestSupport::TemporaryDirectory directory;
};

TEST_F(RequireRegularFileTest, AcceptsAFileAndALinkToOne) {
    const std::string file = directory.write("file", "");
    EXPECT_NO_THROW(requireRegularFile(file));
    EXPECT_NO_THROW(requireRegularFile(directory.makeSymlink("link", file)));
    EXPECT_NO_THROW(requireRegularFile(directory.write("\xC3\xA9 file", "x")));
}

TEST_F(RequireRegularFileTest, RefusesWhatIsMissing) {
    expectNotFound(directory.file("missing"));
    expectNotFound(directory.file("missing/file"));
    expectNotFound(directory.write("file", "") + "/below");
    expectNotFound(directory.makeSymlink("dangling", directory.file("missing")));
    expectNotFound("");
}

TEST_F(RequireRegularFileTest, RefusesWhatIsNoRegularFile) {
    const std::string fifo = directory.file("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    expectNotFound(fifo);
    expectNotFound(directory.name());
    expectNotFound(directory.makeDirectory("directory"));
    expectNotFound(directory.makeSymlink("link", directory.file("directory")));
    expectNotFound("/dev/null");
}

TEST_F(RequireRegularFileTest, LetsFailuresOfTheQueryPass) {
    const std::string loop = directory.makeSymlink("loop", directory.file("loop"));
    EXPECT_THROW(requireRegularFile(loop), boost::filesystem::filesystem_error);
    EXPECT_THROW(requireRegularFile(directory.file(std::string(5000, 'x'))), boost::filesystem::filesystem_error);
}

}  // namespace
}  // namespace CoordinateTransformation
