#include "tools/projdir/DirectoryFiles.h"

#include <csignal>
#include <ostream>
#include <sstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"
#include "tools/projdir/Registry.h"

namespace ProjDir {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

CrsOutcome makeOutcome(unsigned int code, const char* name, const char* text, bool isNorthFirst) {
    CrsOutcome outcome;
    outcome.crs.code = code;
    outcome.crs.name = name;
    outcome.definition = ClassicDefinition{};
    outcome.definition->text = text;
    outcome.definition->isNorthFirst = isNorthFirst;
    outcome.definition->shift.kind = ShiftKind::PUBLISHED;
    outcome.definition->shift.source = "EPSG:1";
    return outcome;
}

std::vector<CrsOutcome> makeOutcomes() {
    std::vector<CrsOutcome> outcomes = {makeOutcome(10, "First", "+proj=longlat", true),
                                        makeOutcome(15, "Nothing", "", true),
                                        makeOutcome(20, "Second / Zone", "+proj=utm", false)};
    outcomes[1].definition.reset();
    return outcomes;
}

const RegistryVersion VERSION{"v1.2", "2022-08-31", "9.1.1"};

TEST(DirectoryTextTest, WritesEntriesUnderTheirNames) {
    EXPECT_EQ(writeInitFile(VERSION, makeOutcomes()),
              "# EPSG Geodetic Parameter Dataset v1.2 of 2022-08-31, from the database of PROJ 9.1.1\n"
              "# Unknown and default CRS\n"
              "<0> +proj=longlat +datum=WGS84 +no_defs <>\n"
              "# First; shift EPSG:1\n"
              "<10> +proj=longlat <>\n"
              "# Second / Zone; shift EPSG:1\n"
              "<20> +proj=utm <>\n");
}

TEST(DirectoryTextTest, NamesTheProgramThatMadeIt) {
    EXPECT_EQ(writeInitFile(VERSION, {}, "crs-projdir 1.0.0 --fit"),
              "# EPSG Geodetic Parameter Dataset v1.2 of 2022-08-31, from the database of PROJ 9.1.1\n"
              "# Made by crs-projdir 1.0.0 --fit\n"
              "# Unknown and default CRS\n"
              "<0> +proj=longlat +datum=WGS84 +no_defs <>\n");
}

constexpr char INFO_HEAD[] =
    "code,name,kind,area,west,south,east,north,unit,unit_length,datum,datum_id,shift_source,shift_accuracy,"
    "largest_distance,replaced_by\n";

TEST(DirectoryTextTest, WritesTheDescriptionOfEachCrs) {
    std::vector<CrsOutcome> outcomes = makeOutcomes();
    outcomes[0].crs.area = Area{170, -5.25, -170, 10};
    outcomes[0].crs.kind = CrsKind::GEOGRAPHIC;
    outcomes[0].crs.areaName = "Here, \"there\"\nand\relsewhere";
    outcomes[0].crs.datum = {"EPSG:6258", "Datum"};
    outcomes[0].unit = "degree";
    outcomes[0].unitLength = 0.017453292519943295;
    outcomes[0].replacedBy = {5, 7};
    outcomes[0].definition->shift.accuracy = 0.5;
    outcomes[0].largestDistance = 12.345;
    EXPECT_EQ(writeDescriptionFile(outcomes),
              std::string(INFO_HEAD) +
                  "10,First,geographic,\"Here, \"\"there\"\" and elsewhere\",170,-5.25,-170,10,degree,"
                  "0.017453292519943295,Datum,EPSG:6258,EPSG:1,0.5,12.35,5 7\n"
                  "20,Second / Zone,other,,,,,,,0,,,EPSG:1,,,\n");
}

TEST(DirectoryTextTest, NamesTheSourceOfEveryKindOfShift) {
    std::vector<CrsOutcome> outcomes = {makeOutcome(10, "Name", "text", true)};
    const std::pair<ShiftKind, const char*> rows[] = {{ShiftKind::PUBLISHED, ",a.tif,"},
                                                      {ShiftKind::FITTED, ",fitted,"},
                                                      {ShiftKind::GRID, ",grid a.tif,"},
                                                      {ShiftKind::UNKNOWN, ",0,,,,,,"},
                                                      {ShiftKind::WGS_84, ",0,,,,,,"}};
    outcomes[0].definition->shift.source = "a.tif";
    for (const auto& [kind, text] : rows) {
        outcomes[0].definition->shift.kind = kind;
        EXPECT_NE(writeDescriptionFile(outcomes).find(text), std::string::npos) << text;
    }
}

// A manipulated registry may hold such names.
TEST(DirectoryTextTest, KeepsEveryNameInItsComment) {
    std::vector<CrsOutcome> outcomes = {
        makeOutcome(10, "A\n<666> +proj=merc <>\r<667>\v#\f\x1B[2J<B>", "+proj=longlat", true)};
    outcomes[0].definition->shift.source = "EPSG:1\n<668>";
    EXPECT_EQ(writeInitFile({"v1\n<669>", "2022-08-31", "9.1.1"}, outcomes),
              "# EPSG Geodetic Parameter Dataset v1 <669> of 2022-08-31, from the database of PROJ 9.1.1\n"
              "# Unknown and default CRS\n"
              "<0> +proj=longlat +datum=WGS84 +no_defs <>\n"
              "# A <666> +proj=merc <> <667> #  [2J<B>; shift EPSG:1 <668>\n"
              "<10> +proj=longlat <>\n");
    EXPECT_EQ(writeAxisOrderFile(outcomes), "0;en\n10;ne\n");
}

TEST(DirectoryTextTest, RecognisesCharactersThatEndADefinition) {
    EXPECT_TRUE(isWholeDefinition("+proj=utm +zone=32 +nadgrids=a-b_c.gsb"));
    for (const char* text : {"+proj=utm <>", "<1>", "+proj=utm #", "+proj=utm\n", "+a=\t1"})
        EXPECT_FALSE(isWholeDefinition(text)) << text;
}

TEST(DirectoryTextTest, WritesALineForEveryEntry) {
    EXPECT_EQ(writeAxisOrderFile(makeOutcomes()), "0;en\n10;ne\n20;en\n");
}

TEST(DirectoryTextTest, MarksAreasWithoutAKnownShift) {
    std::vector<CrsOutcome> outcomes = {makeOutcome(10, "Name", "text", true)};
    const auto comment = [&] {
        const std::string text = writeInitFile(VERSION, outcomes);
        const std::size_t begin = text.find("# Name");
        return text.substr(begin, text.find('\n', begin) - begin);
    };
    outcomes[0].definition->farPoints = 3;
    EXPECT_EQ(comment(), "# Name; shift EPSG:1; far off at 3 points");
    outcomes[0].definition->farPoints = 0;
    outcomes[0].definition->hasUnknownPart = true;
    EXPECT_EQ(comment(), "# Name; shift EPSG:1; PROJ knows no shift in part of the area");
    outcomes[0].definition->shift.kind = ShiftKind::UNKNOWN;
    EXPECT_EQ(comment(), "# Name; PROJ knows no shift");
    outcomes[0].definition->shift.kind = ShiftKind::WGS_84;
    outcomes[0].definition->hasUnknownPart = false;
    EXPECT_EQ(comment(), "# Name");
}

// The examples of FIPS 180-2, and a checksum by sha256sum for a text that is longer than a block.
TEST(GridFilesTest, ComputesChecksums) {
    const TestSupport::TemporaryDirectory work;
    EXPECT_EQ(computeSha256(work.write("abc", "abc")),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(computeSha256(work.write("empty", "")),
              "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(computeSha256(work.write("million", std::string(1000000, 'a'))),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
    EXPECT_THROW(computeSha256(work.file("none")), FileError);
}

CrsOutcome makeShifted(ShiftKind kind, const char* source) {
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
        {makeShifted(ShiftKind::GRID, "b_not_there.tif"), makeShifted(ShiftKind::GRID, "a_not_there.tif"),
         makeShifted(ShiftKind::GRID, "b_not_there.tif"), makeShifted(ShiftKind::PUBLISHED, "EPSG:1"), CrsOutcome{}});
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(writeGridFiles(files), "file,sha256\na_not_there.tif,\nb_not_there.tif,\n");
    EXPECT_EQ(writeMissingGrids(files),
              "grid file not installed: a_not_there.tif\ngrid file not installed: b_not_there.tif\n");
}

TEST(GridFilesTest, WritesTheChecksumOfWhatIsThere) {
    EXPECT_EQ(writeGridFiles({{"a.tif", "0f"}}), "file,sha256\na.tif,0f\n");
    EXPECT_EQ(writeMissingGrids({{"a.tif", "0f"}}), "");
}

std::vector<unsigned int> readCodes(const std::string& text) {
    std::vector<unsigned int> codes;
    for (const ListedCode& listed : readCodeList(text, "list")) codes.push_back(listed.code);
    return codes;
}

std::string refusalOf(const std::string& text) {
    try {
        readCodes(text);
    } catch (const FileError& refusal) {
        return refusal.what();
    }
    return "accepted";
}

TEST(CodeListTest, ReadsACodeALine) {
    EXPECT_THAT(readCodes("4326\n25832\n"), ElementsAre(4326, 25832));
    EXPECT_THAT(readCodes("4326"), ElementsAre(4326));
    EXPECT_THAT(readCodes(" EPSG:4326 # WGS 84\r\n\n# nothing\n\t25832\n"), ElementsAre(4326, 25832));
}

std::vector<unsigned int> readConfiguration(const std::string& entries) {
    std::vector<unsigned int> codes;
    for (const ListedCode& listed :
         readConfigurationCodes("<CrsConfiguration>" + entries + "</CrsConfiguration>", "crs.xml"))
        codes.push_back(listed.code);
    return codes;
}

TEST(CodeListTest, ReadsTheCodesOfAConfiguration) {
    EXPECT_THAT(readConfiguration("<CRS>4326</CRS><CRS>EPSG:27700*EPSG:5701</CRS><CRS>CRS:84</CRS>"
                                  "<CRS mapToEpsgCode=\"25832\">Lagestatus 489</CRS>"),
                ElementsAre(4326, 27700, 4326, 25832));
    EXPECT_EQ(readConfigurationCodes("<SRSList><SRS>2056</SRS></SRSList>", "crs.xml").front().place,
              "crs.xml, entry EPSG:2056");
}

TEST(CodeListTest, RefusesTextThatIsNotAConfiguration) {
    EXPECT_THROW(readConfiguration(""), FileError);
    EXPECT_THROW(readConfiguration("<CRS>nonsense</CRS>"), FileError);
    EXPECT_THROW(readConfiguration("<CRS>4326"), FileError);
}

struct RefusedList {
    const char* text;
    const char* message;
};

void PrintTo(const RefusedList& list, std::ostream* stream) { *stream << list.message; }

class RefusedListTest : public testing::TestWithParam<RefusedList> {};

TEST_P(RefusedListTest, NamesLineAndText) { EXPECT_EQ(refusalOf(GetParam().text), GetParam().message); }

INSTANTIATE_TEST_SUITE_P(
    Texts, RefusedListTest,
    testing::Values(RefusedList{"4326\nabc\n", "list, line 2: \"abc\" is not an EPSG code"},
                    RefusedList{"4326;en\n", "list, line 1: \"4326;en\" is not an EPSG code"},
                    RefusedList{"-1\n", "list, line 1: \"-1\" is not an EPSG code"},
                    RefusedList{"4326 25832\n", "list, line 1: \"4326 25832\" is not an EPSG code"},
                    RefusedList{"EPSG:\n", "list, line 1: \"EPSG:\" is not an EPSG code"},
                    RefusedList{"99999999999\n", "list, line 1: \"99999999999\" is not an EPSG code"},
                    RefusedList{"", "list names no code"}, RefusedList{"# only this\n", "list names no code"}));

RegistryCrs makeCrs(unsigned int code, bool isDeprecated) {
    RegistryCrs crs;
    crs.code = code;
    crs.isDeprecated = isDeprecated;
    return crs;
}

const std::vector<RegistryCrs> REGISTRY = {makeCrs(10, false), makeCrs(20, true), makeCrs(30, false)};

std::vector<unsigned int> codesOf(const std::vector<RegistryCrs>& list) {
    std::vector<unsigned int> codes;
    for (const RegistryCrs& crs : list) codes.push_back(crs.code);
    return codes;
}

TEST(CodeSelectionTest, KeepsTheOrderOfTheRegistry) {
    EXPECT_THAT(codesOf(selectListed(REGISTRY, {{30, ""}, {10, ""}, {30, ""}, {11, ""}})), ElementsAre(10, 30));
}

TEST(CodeSelectionTest, NamesACodeThatIsUnknownOrDeprecated) {
    const auto refusal = [](unsigned int code) -> std::string {
        try {
            requireListed(REGISTRY, {{10, "list, line 6"}, {code, "list, line 7"}}, false);
        } catch (const FileError& failure) {
            return failure.what();
        }
        return "accepted";
    };
    EXPECT_EQ(refusal(15), "list, line 7: the registry has no CRS EPSG:15");
    EXPECT_EQ(refusal(99), "list, line 7: the registry has no CRS EPSG:99");
    EXPECT_EQ(refusal(20), "list, line 7: EPSG:20 is deprecated; --include-deprecated admits it");
    EXPECT_NO_THROW(requireListed(REGISTRY, {{10, ""}, {20, ""}}, true));
}

template <typename Action>
std::string failureOf(Action action) {
    try {
        action();
    } catch (const FileError& failure) {
        return failure.what();
    }
    return "";
}

// The system refuses files beyond this size, as it does on a full disk.
class DiskLimit {
public:
    explicit DiskLimit(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit limit{bytes, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    DiskLimit(const DiskLimit&) = delete;
    DiskLimit& operator=(const DiskLimit&) = delete;
    ~DiskLimit() { setrlimit(RLIMIT_FSIZE, &before); }

private:
    rlimit before{};
};

// The superuser may write everywhere, so these tests run as another user.
class OrdinaryUser {
public:
    OrdinaryUser() { EXPECT_TRUE(!isSuperuser || seteuid(NOBODY) == 0); }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
    ~OrdinaryUser() { EXPECT_TRUE(!isSuperuser || seteuid(0) == 0); }

private:
    static constexpr uid_t NOBODY = 65534;
    bool isSuperuser = geteuid() == 0;
};

TEST(OutputFileTest, AppearsOnlyWhenItIsPublished) {
    const TestSupport::TemporaryDirectory directory;
    OutputFile file(directory.file("epsg"), false);
    file.probe();
    EXPECT_THAT(directory.list(), IsEmpty());
    file.write("text\n");
    EXPECT_FALSE(std::filesystem::exists(directory.file("epsg")));
    file.publish();
    EXPECT_THAT(directory.list(), ElementsAre("epsg"));
    EXPECT_EQ(directory.read("epsg"), "text\n");
}

TEST(OutputFileTest, LeavesNothingUnlessItIsPublished) {
    const TestSupport::TemporaryDirectory directory;
    directory.write("epsg", "old");
    {
        OutputFile file(directory.file("epsg"), true);
        file.write("new");
    }
    EXPECT_THAT(directory.list(), ElementsAre("epsg"));
    EXPECT_EQ(directory.read("epsg"), "old");
}

TEST(OutputFileTest, OverwritesOnlyWhenItMay) {
    const TestSupport::TemporaryDirectory directory;
    const std::string path = directory.write("epsg", "old");
    EXPECT_EQ(failureOf([&] { OutputFile(path, false); }), "\"" + path + "\" exists already; --force overwrites it");
    EXPECT_EQ(directory.read("epsg"), "old");
    OutputFile file(path, true);
    file.write("new");
    file.publish();
    EXPECT_EQ(directory.read("epsg"), "new");
}

TEST(OutputFileTest, WritesTheFileBehindALink) {
    const TestSupport::TemporaryDirectory directory;
    const std::string path = directory.write("real", "old");
    std::filesystem::create_symlink(path, directory.file("link"));
    OutputFile file(directory.file("link"), true);
    file.write("new");
    file.publish();
    EXPECT_EQ(directory.read("real"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(directory.file("link")));
}

TEST(OutputFileTest, RefusesADirectory) {
    const TestSupport::TemporaryDirectory directory;
    EXPECT_THAT(failureOf([&] { OutputFile(directory.name(), true); }), HasSubstr("is a directory"));
}

TEST(OutputFileTest, NamesAFullDisk) {
    const TestSupport::TemporaryDirectory directory;
    directory.write("epsg", "old");
    const std::string text(100000, 'x');
    OutputFile file(directory.file("epsg"), true);
    {
        const DiskLimit limit(5000);
        EXPECT_THAT(failureOf([&] { file.write(text); }),
                    AllOf(HasSubstr("cannot write"), HasSubstr(directory.file("epsg"))));
    }
    EXPECT_EQ(directory.read("epsg"), "old");
}

TEST(OutputFileTest, NamesAFullDevice) {
    OutputFile file("/dev/full", true);
    file.write("text");
    EXPECT_EQ(failureOf([&] { file.publish(); }), "cannot write \"/dev/full\": No space left on device");
}

TEST(OutputFileTest, WritesToADevice) {
    OutputFile file("/dev/null", false);
    file.probe();
    file.write("text");
    file.publish();
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST(OutputFileTest, NamesADirectoryThatMustNotBeWrittenTo) {
    const TestSupport::TemporaryDirectory directory;
    chmod(directory.name().c_str(), 0555);
    const OrdinaryUser user;
    const OutputFile file(directory.file("epsg"), false);
    EXPECT_EQ(failureOf([&] { file.probe(); }), "cannot write \"" + directory.file("epsg") + "\": Permission denied");
}

TEST(OutputFileTest, NamesADirectoryThatIsNotThere) {
    const TestSupport::TemporaryDirectory directory;
    const OutputFile file(directory.file("none/epsg"), false);
    EXPECT_THAT(failureOf([&] { file.probe(); }), HasSubstr("No such file or directory"));
}

// In a process of its own, as a signal ends it.
TEST(BlockedSignalsTest, AreDeliveredWhenTheWorkIsDone) {
    const TestSupport::TemporaryDirectory directory;
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        const pid_t child = fork();
        if (child == 0) {
            {
                const BlockedSignals blocked;
                raise(signal);
                directory.write("done", "");
            }
            _exit(0);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal);
        EXPECT_TRUE(std::filesystem::remove(directory.file("done")));
    }
}

TEST(OutputDirectoryTest, IsMadeAndKept) {
    const TestSupport::TemporaryDirectory parent;
    {
        OutputDirectory directory(parent.file("made"));
        EXPECT_EQ(directory.file("epsg"), parent.file("made/epsg"));
        directory.keep();
    }
    EXPECT_TRUE(std::filesystem::is_directory(parent.file("made")));
}

TEST(OutputDirectoryTest, IsRemovedUnlessItIsKept) {
    const TestSupport::TemporaryDirectory parent;
    { const OutputDirectory directory(parent.file("made")); }
    EXPECT_THAT(parent.list(), IsEmpty());
}

TEST(OutputDirectoryTest, StaysWhenItWasThereBefore) {
    const TestSupport::TemporaryDirectory parent;
    { const OutputDirectory directory(parent.name()); }
    EXPECT_TRUE(std::filesystem::is_directory(parent.name()));
}

TEST(OutputDirectoryTest, NamesAFileInItsPlace) {
    const TestSupport::TemporaryDirectory parent;
    const std::string path = parent.write("file", "");
    EXPECT_THAT(failureOf([&] { OutputDirectory directory(path); }),
                AllOf(HasSubstr("cannot create directory"), HasSubstr(path)));
}

}  // namespace
}  // namespace ProjDir
