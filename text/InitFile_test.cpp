#include "text/InitFile.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"
#include "text/ParameterList.h"

namespace CoordinateTransformation {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Key;
using TestSupport::TemporaryDirectory;
using Definitions = std::map<std::string, std::string>;

// Codes with the parameters of their definitions.
Definitions definitionsIn(const std::string& text) {
    Definitions read;
    for (const auto& [code, definition] : parseInitFile(text)) read[code] = ParameterList(definition).toText();
    return read;
}

// "line code text" of each definition in file order, with "|" for each line end in the text.
std::vector<std::string> placedDefinitionsIn(const std::string& text) {
    std::vector<std::string> definitions;
    for (const InitFileDefinition& definition : readInitFileText(text)) {
        std::string written = std::to_string(definition.line) + " " + definition.code + definition.text;
        std::replace(written.begin(), written.end(), '\n', '|');
        definitions.push_back(written);
    }
    return definitions;
}

TEST(InitFileTextTest, HasItsDefinitionsInOrderWithTheirLinesAndWithoutComments) {
    EXPECT_THAT(placedDefinitionsIn("# <9> +z <>\n<2> +a <>\n\n<1> +b\n+c <> <3> +d"),
                ElementsAre("2 2 +a |", "4 1 +b|+c |", "5 3 +d|"));
    EXPECT_THAT(placedDefinitionsIn("<1>\n<>\n"), ElementsAre("1 1|"));
    EXPECT_THAT(placedDefinitionsIn("<1> +a # <2> +b\n+c <>\n"), ElementsAre("1 1 +a |+c |"));
    EXPECT_THAT(placedDefinitionsIn("<1> +a <>\n# comment\n<1> +b <>\n"), ElementsAre("1 1 +a |", "3 1 +b |"));
}

struct InitFileText {
    const char* name;
    std::string text;
    Definitions definitions;
};

void PrintTo(const InitFileText& text, std::ostream* stream) { *stream << text.name; }

class InitFileGrammarTest : public testing::TestWithParam<InitFileText> {};

std::string nameOf(const testing::TestParamInfo<InitFileText>& text) { return text.param.name; }

TEST_P(InitFileGrammarTest, Reads) { EXPECT_EQ(definitionsIn(GetParam().text), GetParam().definitions); }

const Definitions ONE = {{"1", " +a"}};
const Definitions TWO = {{"1", " +a"}, {"2", " +b"}};

std::string withNul(const std::string& before, const std::string& after) { return before + '\0' + after; }

INSTANTIATE_TEST_SUITE_P(
    Accepted, InitFileGrammarTest,
    testing::Values(
        InitFileText{"ADefinition", "<1> +a <>", ONE},
        InitFileText{"DefinitionsOfSeveralLines", "<1>\n+a\n+c\n<>\n<2> +b <>", {{"1", " +a +c"}, {"2", " +b"}}},
        InitFileText{"ADefinitionWithoutItsEnd", "<1> +a\n<2> +b", TWO},
        InitFileText{"DefinitionsOfOneLine", "<1> +a <> <2> +b <>", TWO},
        InitFileText{"DefinitionsSideBySide", "<1>+a<2>+b<>", TWO},
        InitFileText{"WindowsLineEnds", "<1> +a\r\n<>\r\n<2> +b <>\r\n", TWO},
        InitFileText{"CommentsBetweenDefinitions", "# <3> +c <>\n<1> +a <>\n# x\n<2> +b <>#", TWO},
        InitFileText{"ACommentBehindParameters", "<1> +a # +c <3> +d\n<2> +b <>", TWO},
        InitFileText{"CommentsInsideADefinition", "<1>\n# first <\n+a # second >\n#third\n<>\n<2> +b <>", TWO},
        InitFileText{"ACommentWithoutLineEnd", "<1> +a # <2> +b", ONE},
        InitFileText{"TextAroundDefinitions", "text > here <1> +a <> and <2> +b <> there", TWO},
        InitFileText{"ACodeThatIsNoNumber", "<metadata> +version=9 <>", {{"metadata", " +version=9"}}},
        InitFileText{"TheFirstOfTwoWithOneCode", "<1> +a <>\n<1> +b <>", ONE},
        InitFileText{"ADefinitionWithoutParameters", "<1><>", {{"1", ""}}}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(Broken, InitFileGrammarTest,
                         testing::Values(InitFileText{"AnEmptyFile", "", {}},
                                         InitFileText{"OnlyText", "+proj=utm +zone=32", {}},
                                         InitFileText{"OnlyAnEnd", "<>", {}},
                                         InitFileText{"OnlyAnOpenBracket", "<", {}},
                                         InitFileText{"AnOpenBracketAtTheEnd", "<1> +a <", ONE},
                                         InitFileText{"ACodeThatIsNotClosed", "<3 +c\n<1> +a <>", ONE},
                                         InitFileText{"ACodeThatEndsTheFile", "<1> +a <3", ONE},
                                         InitFileText{"ACodeWithABlank", "< 3> +c <1 3> +c <1> +a <>", ONE},
                                         InitFileText{"ACodeAcrossLines", "<3\n> +c <1> +a <>", ONE},
                                         InitFileText{"ACodeWithABracket", "<<1> +a <>", ONE}),
                         nameOf);

INSTANTIATE_TEST_SUITE_P(
    Binary, InitFileGrammarTest,
    testing::Values(InitFileText{"NulBytesBeforeADefinition", withNul("", "\n<1> +a <>"), ONE},
                    InitFileText{"NulBytesBetweenDefinitions", withNul("<1> +a <>", "<2> +b <>"), TWO},
                    InitFileText{"BytesBeyondAscii", "\xff\xfe\x80<1> +a <>\xc3\x28<2> +b <>\x01", TWO},
                    InitFileText{"AByteOrderMark", "\xef\xbb\xbf<1> +a <>", ONE}),
    nameOf);

TEST(InitFileTextTest, SurvivesEveryByteInEveryPlace) {
    for (int byte = 0; byte < 256; ++byte) {
        for (std::size_t place = 0; place < 9; ++place) {
            std::string text = "<1> +a <>";
            text[place] = static_cast<char>(byte);
            EXPECT_THAT(parseInitFile(text + "\n<2> +b <>"), Contains(Key("2"))) << byte << " at " << place;
        }
    }
}

TEST(InitFileTextTest, SkipsADefinitionBeyondAllMeasure) {
    const std::string longest(65000, 'x');
    EXPECT_EQ(definitionsIn("<1> +a <2> +" + longest + " <>").size(), 2U);
    EXPECT_EQ(definitionsIn("<1> +a <2> +" + longest + longest + " <>"), ONE);
}

class InitFileTest : public testing::Test {
protected:
    void write(const std::string& content) { directory.write("epsg", content); }
    std::string find(const std::string& code) {
        const std::optional<std::string> text = file.find(code);
        return text ? ParameterList(*text).toText() : "none";
    }
    void setTime(int seconds) {
        std::filesystem::last_write_time(directory.file("epsg"), start + std::chrono::seconds(seconds));
    }

    const TemporaryDirectory directory;
    const std::filesystem::file_time_type start = std::filesystem::file_time_type::clock::now();
    InitFile file{directory.file("epsg")};
};

TEST_F(InitFileTest, FindsACodeByItsWholeText) {
    write("<25832> +a <>");
    EXPECT_EQ(find("25832"), " +a");
    for (const char* code : {"2583", "258322", "025832", " 25832", "", "<25832>"})
        EXPECT_EQ(find(code), "none") << code;
}

TEST_F(InitFileTest, ReadsAgainForAMissingCodeWhenTheSizeHasChanged) {
    write("<1> +a <>");
    setTime(0);
    EXPECT_EQ(find("2"), "none");
    write("<1> +c <>\n<2> +b <>");
    setTime(0);
    EXPECT_EQ(find("2"), " +b");
    EXPECT_EQ(find("1"), " +c");
}

TEST_F(InitFileTest, ReadsAgainForAMissingCodeWhenTheTimeHasChanged) {
    write("<1> +a <>");
    setTime(0);
    EXPECT_EQ(find("2"), "none");
    write("<2> +b <>");
    setTime(1);
    EXPECT_EQ(find("2"), " +b");
    EXPECT_EQ(find("1"), "none");
}

TEST_F(InitFileTest, DoesNotReadAFileAgainThatHasNotChanged) {
    write("<1> +a <>");
    setTime(0);
    EXPECT_EQ(find("1"), " +a");
    write("<2> +b <>");
    setTime(0);
    EXPECT_EQ(find("2"), "none");
    EXPECT_EQ(find("1"), " +a");
}

TEST_F(InitFileTest, DoesNotLookAtTheFileForACodeThatItHas) {
    write("<1> +a <>");
    EXPECT_EQ(find("1"), " +a");
    write("<1> +b <>\n<2> +b <>");
    EXPECT_EQ(find("1"), " +a");
    std::filesystem::remove(directory.file("epsg"));
    EXPECT_EQ(find("1"), " +a");
    EXPECT_EQ(find("2"), "none");
}

TEST_F(InitFileTest, HasNoCodesWhileTheFileIsMissing) {
    EXPECT_EQ(find("1"), "none");
    write("<1> +a <>");
    EXPECT_EQ(find("1"), " +a");
}

TEST_F(InitFileTest, HasNoCodesForAnEmptyFile) {
    write("");
    EXPECT_EQ(find("1"), "none");
    EXPECT_EQ(find(""), "none");
}

// "/proc/self/mem" is a regular file by its type, but no process can read its first byte, not even the administrator's.
TEST_F(InitFileTest, HasNoCodesForWhatCannotBeReadAndDoesNotWaitForAPipe) {
    ASSERT_EQ(mkfifo(directory.file("pipe").c_str(), 0600), 0);
    for (const std::string& path : {directory.name(), directory.file("pipe"), std::string("/proc/self/mem")})
        EXPECT_FALSE(InitFile(path).find("1").has_value()) << path;
}

// While it lives, the process cannot open files.
class NoDescriptors {
public:
    NoDescriptors() {
        getrlimit(RLIMIT_NOFILE, &limit);
        const rlimit none{0, limit.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &limit); }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

private:
    rlimit limit{};
};

class InterruptedInitFileTest : public InitFileTest {
protected:
    std::string findWithoutDescriptors(const std::string& code) {
        const NoDescriptors exhausted;
        return find(code);
    }
};

TEST_F(InterruptedInitFileTest, FindsACodeThatTheFirstReadCouldNot) {
    write("<1> +a <>");
    EXPECT_EQ(findWithoutDescriptors("1"), "none");
    EXPECT_EQ(find("1"), " +a");
}

TEST_F(InterruptedInitFileTest, KeepsItsIndexWhenItCannotReadAgain) {
    write("<1> +a <>");
    EXPECT_EQ(find("1"), " +a");
    write("<1> +c <>\n<2> +b <>");
    EXPECT_EQ(findWithoutDescriptors("2"), "none");
    EXPECT_EQ(findWithoutDescriptors("1"), " +a");
    EXPECT_EQ(find("2"), " +b");
    EXPECT_EQ(find("1"), " +c");
}

TEST_F(InterruptedInitFileTest, KeepsItsIndexWhenAReadBreaksOff) {
    write("<1> +a <>");
    EXPECT_EQ(find("1"), " +a");
    std::filesystem::remove(directory.file("epsg"));
    directory.makeSymlink("epsg", "/proc/self/mem");
    EXPECT_EQ(find("2"), "none");
    EXPECT_EQ(find("1"), " +a");
    std::filesystem::remove(directory.file("epsg"));
    write("<2> +b <>");
    EXPECT_EQ(find("2"), " +b");
}

TEST_F(InterruptedInitFileTest, KeepsItsIndexWhenTheFileHasGrownBeyondAllMeasure) {
    write("<1> +a <>");
    EXPECT_EQ(find("1"), " +a");
    std::filesystem::resize_file(directory.file("epsg"), (std::uintmax_t{256} << 20) + 1);
    EXPECT_EQ(find("2"), "none");
    EXPECT_EQ(find("1"), " +a");
}

class EndlessLineOfInitFileTest : public InitFileTest {
protected:
    void writeEndlessLine(const std::string& begin, const std::string& end) {
        const std::string megabyte(1 << 20, 'x');
        std::ofstream stream(directory.file("epsg"), std::ios::binary);
        stream << begin;
        for (int i = 0; i < 100; ++i) stream << megabyte;
        stream << end;
    }
};

TEST_F(EndlessLineOfInitFileTest, FindsTheDefinitionsAfterIt) {
    writeEndlessLine("", "\n<1> +a <>");
    EXPECT_EQ(find("1"), " +a");
}

TEST_F(EndlessLineOfInitFileTest, SkipsADefinitionOfSuchALine) {
    writeEndlessLine("<1> +a <2> +", " <3> +c <>");
    EXPECT_EQ(find("1"), " +a");
    EXPECT_EQ(find("2"), "none");
    EXPECT_EQ(find("3"), " +c");
}

TEST_F(EndlessLineOfInitFileTest, SkipsACodeOfSuchALine) {
    writeEndlessLine("<", "> +b <1> +a <>");
    EXPECT_EQ(find("1"), " +a");
}

}  // namespace
}  // namespace CoordinateTransformation
