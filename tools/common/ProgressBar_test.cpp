#include "tools/common/ProgressBar.h"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"

namespace Tools {
namespace {

TEST(TheProgressLine, ShowsBarPercentNoteAndTimeLeft) {
    EXPECT_EQ(progressLine("", {0, 100, 0}, "0 lines/s"), "[........................]   0 %  0 lines/s  - left");
    EXPECT_EQ(progressLine("Work", {50, 100, 2}, "5 lines/s"),
              "Work [############............]  50 %  5 lines/s  0:02 left");
    EXPECT_EQ(progressLine("Work", {1, 100, 60}, ""), "Work [........................]   1 %  1:39:00 left");
    EXPECT_EQ(progressLine("Work", {100, 100, 1}, ""), "Work [########################] 100 %  0:00 left");
}

struct Remainder {
    Progress progress;
    const char* left;
};

// The time left is that of the steps that are not done, at the speed so far.
TEST(TheProgressLine, ShowsTheTimeLeft) {
    for (const Remainder& tried :
         {Remainder{{1, 2, 7}, "0:07"}, Remainder{{1, 2, 59.4}, "0:59"}, Remainder{{1, 2, 59.6}, "1:00"},
          Remainder{{1, 2, 750}, "12:30"}, Remainder{{1, 2, 3599}, "59:59"}, Remainder{{1, 2, 3600}, "1:00:00"},
          Remainder{{1, 4, 3700}, "3:05:00"}, Remainder{{1, 2, 360000}, "99:00:00"}, Remainder{{0, 2, 7}, "-"},
          Remainder{{2, 2, 7}, "0:00"}, Remainder{{3, 2, 7}, "0:00"}, Remainder{{0, 0, 7}, "0:00"}}) {
        const std::string line = progressLine("", tried.progress, "");
        EXPECT_EQ(line.substr(line.find("%  ")), std::string("%  ") + tried.left + " left");
    }
}

TEST(TheProgressLine, HasAFullBarOnlyForADoneRun) {
    EXPECT_EQ(progressLine("", {999, 1000, 0}, ""), "[#######################.]  99 %  0:00 left");
    EXPECT_EQ(progressLine("", {0, 0, 0}, ""), "[########################] 100 %  0:00 left");
    EXPECT_EQ(progressLine("", {1001, 1000, 0}, ""), "[########################] 100 %  0:00 left");
}

TEST(TheProgressLine, IsThatOfTheHeader) {
    EXPECT_EQ(progressLine("Work", {25, 100, 2}, "1,500 lines/s"),
              "Work [######..................]  25 %  1,500 lines/s  0:06 left");
}

TEST(TheProgressLine, FitsATerminal) {
    const std::string longestNote = "18,446,744,073,710 lines/s";
    EXPECT_LE(progressLine("", {1, 18446744073709551615U, 1e9}, longestNote).size(), 79U);
    EXPECT_LE(progressLine("", {200, 100, 1}, longestNote).size(), 79U);
    EXPECT_LE(progressLine("", {0, 0, 1}, longestNote).size(), 79U);
}

// The master of a pseudo-terminal, which reads what is drawn on the other side.
class PseudoTerminal {
public:
    PseudoTerminal() : master(posix_openpt(O_RDWR | O_NOCTTY)) {
        grantpt(master);
        unlockpt(master);
        output = std::fopen(ptsname(master), "w");
    }
    ~PseudoTerminal() {
        std::fclose(output);
        close(master);
    }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    // Returns the text that is drawn so far.
    std::string drawn() {
        std::fputc('$', output);
        std::fflush(output);
        std::string text;
        std::array<char, 1024> buffer{};
        while (text.empty() || text.back() != '$') {
            const ssize_t count = read(master, buffer.data(), buffer.size());
            if (count <= 0) break;
            text.append(buffer.data(), static_cast<std::size_t>(count));
        }
        return text.substr(0, text.size() - 1);
    }

    const int master;
    std::FILE* output;
};

class ATerminal : public testing::Test {
protected:
    ATerminal() {
        setenv("TERM", "xterm", 1);
        unsetenv("NO_COLOR");
    }
    ~ATerminal() override { unsetenv("NO_COLOR"); }

    PseudoTerminal terminal;
};

TEST_F(ATerminal, ShowsTheFirstStepAndIsLeftClear) {
    {
        ProgressBar bar(terminal.output, "Work", 4);
        bar.advance();
        bar.advance();
    }
    EXPECT_EQ(terminal.drawn(), "\r\x1B[KWork [######..................]  25 %  0:00 left\r\x1B[K");
}

TEST_F(ATerminal, ShowsNoBarThatIsNotWanted) {
    ProgressBar(terminal.output, "Work", 1, false).advance();
    setenv("NO_COLOR", "1", 1);
    ProgressBar(terminal.output, "Work", 1).advance();
    unsetenv("NO_COLOR");
    setenv("TERM", "dumb", 1);
    ProgressBar(terminal.output, "Work", 1).advance();
    EXPECT_EQ(terminal.drawn(), "");
}

TEST_F(ATerminal, ShowsTheNoteOfAStep) {
    ProgressBar bar(terminal.output, "", 4);
    bar.advanceTo(4, "5 lines/s");
    EXPECT_EQ(terminal.drawn(), "\r\x1B[K[########################] 100 %  5 lines/s  0:00 left");
}

TEST_F(ATerminal, IsClearedOnlyIfThereIsABar) {
    ProgressBar bar(terminal.output, "", 1);
    bar.clear();
    EXPECT_EQ(terminal.drawn(), "");
    bar.advance();
    EXPECT_NE(terminal.drawn(), "");
    bar.clear();
    bar.clear();
    EXPECT_EQ(terminal.drawn(), "\r\x1B[K");
}

TEST_F(ATerminal, ShowsABarWithoutATypeOfTerminal) {
    unsetenv("TERM");
    ProgressBar(terminal.output, "", 1).advance();
    EXPECT_NE(terminal.drawn(), "");
}

TEST(AFile, ReceivesNoProgress) {
    const TestSupport::TemporaryDirectory directory;
    std::FILE* const file = std::fopen(directory.file("out").c_str(), "w");
    ASSERT_NE(file, nullptr);
    {
        ProgressBar bar(file, "Work", 2);
        bar.advance();
        bar.advanceTo(2, "done");
        bar.clear();
    }
    std::fclose(file);
    EXPECT_EQ(directory.read("out"), "");
}

}  // namespace
}  // namespace Tools
