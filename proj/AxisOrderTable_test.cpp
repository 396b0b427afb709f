#include "proj/AxisOrderTable.h"

#include <filesystem>
#include <string>
#include <sys/stat.h>

#include <boost/filesystem/exception.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CoordinateTransformation/Misconfigured.h"
#include "QSHelpers/FileNotFoundException.h"
#include "tests/support/Failures.h"
#include "tests/support/GroupingLocale.h"
#include "tests/support/TemporaryDirectory.h"

namespace CoordinateTransformation {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using TestSupport::reportOf;

constexpr bool EAST_NORTH = true;
constexpr bool NORTH_EAST = false;
const std::string WRONG_CELLS =
    "row does contain less or more than two elements which are separated with a \";\" character";
const std::string WRONG_AXIS_ORDER = "only the values \"en\" or \"ne\" are allowed";

const std::string FULL_WIDTH_N = "\xEF\xBD\x8E";
const std::string BYTE_ORDER_MARK = "\xEF\xBB\xBF";

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
        EXPECT_EQ(reportOf<Misconfigured>([&path] { loadAxisOrderTable(path); }), "qvConfigurationError: " + message);
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

TEST_F(AxisOrderTableTest, TrimsTheAxisOrderAndConvertsTheCodeUntrimmed) {
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
    for (const std::string& line :
         {""s, "\r"s, " "s, "4326"s, "4326;"s, ";"s, "4326;ne;x"s, "4326;;ne"s, "4326;ne;;"s, "4326,ne"s, "4326 ne"s,
          "# a comment"s, "code"s, "4326;ne\r3857;en"s, std::string(1 << 20, ';')})
        expectFailure(line + "\n", 2, WRONG_CELLS);
    EXPECT_THAT(axisOrderTable, IsEmpty());
}

TEST_F(AxisOrderTableTest, RefusesEveryOtherAxisOrder) {
    for (const std::string& axisOrder : {"NE"s, "EN"s, "Ne"s, "en ne"s, "n e"s, "e"s, "wn"s, "\"ne\""s, "ne\0"s,
                                         "\0ne"s, "ne\v"s, "ne\xC2\xA0"s, "nee"s, FULL_WIDTH_N + "e", " \t\r"s})
        expectFailure("4326;" + axisOrder + "\n", 2, WRONG_AXIS_ORDER);
    expectFailure(";;\n", 2, WRONG_AXIS_ORDER);
    expectFailure("code;axis order\n", 2, WRONG_AXIS_ORDER);
    EXPECT_THAT(axisOrderTable, IsEmpty());
}

TEST_F(AxisOrderTableTest, RefusesACodeThatIsNotANumber) {
    const std::string nines(1 << 20, '9');
    for (const std::string& code : {"abc"s,
                                    ""s,
                                    " "s,
                                    "-4326"s,
                                    "++4326"s,
                                    "43 26"s,
                                    "4326x"s,
                                    "\t4326"s,
                                    "4326\t"s,
                                    "4326.0"s,
                                    "4e3"s,
                                    "0x10"s,
                                    "EPSG:4326"s,
                                    "\"4326\""s,
                                    "# comment"s,
                                    "4294967296"s,
                                    "99999999999999999999"s,
                                    "43"s + '\0' + "26",
                                    "4326\0"s,
                                    BYTE_ORDER_MARK + "4326",
                                    "\xFF"s,
                                    nines})
        expectFailure(code + ";ne\n", 2, wrongCode(code));
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
        {"4326;ne\n4326;xx\n", 3, WRONG_AXIS_ORDER},
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

TEST_F(AxisOrderTableTest, NeitherReadsNorChecksALineWithoutItsEnd) {
    for (const char* text : {"", "4326;ne", "abc;xx;"}) {
        load(text);
        EXPECT_THAT(axisOrderTable, IsEmpty()) << text;
    }
    load("4326;ne\nabc;xx;");
    EXPECT_THAT(axisOrderTable, ElementsAre(Pair(4326, NORTH_EAST)));
}

TEST_F(AxisOrderTableTest, KeepsTheFirstAxisOrderOfACode) {
    load("4326;ne\n4326;en\n3857;en\n3857;ne\n 4326 ;en\n");
    EXPECT_THAT(axisOrderTable, ElementsAre(Pair(3857, EAST_NORTH), Pair(4326, NORTH_EAST)));
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

TEST_F(AxisOrderTableTest, ReadsTheFileAgainAfterAFailureThatLeftNothing) {
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

// "/proc/self/mem" is a regular file by its type, but no process can read its first byte, not even the administrator's.
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

class RequireRegularFileTest : public testing::Test {
protected:
    static void expectNotFound(const std::string& path) {
        EXPECT_EQ(reportOf<QSHelpers::FileNotFoundException>([&path] { requireRegularFile(path); }),
                  "qvFileNotFound: File \"" + path + "\" not found!\"");
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
