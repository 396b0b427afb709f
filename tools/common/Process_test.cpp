#include "tools/common/Process.h"

#include <array>
#include <csignal>
#include <functional>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

namespace Tools {
namespace {

// A pipe of this process.
struct Pipe {
    Pipe() { EXPECT_EQ(pipe(ends.data()), 0); }
    ~Pipe() {
        closeReader();
        close(ends[1]);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int reader() const { return ends[0]; }
    int writer() const { return ends[1]; }
    void closeReader() {
        if (ends[0] >= 0) close(ends[0]);
        ends[0] = -1;
    }

    std::array<int, 2> ends{};
};

// The exit code of a child that runs `body`, or minus the signal that ended it.
int resultInChild(const std::function<int()>& body) {
    const pid_t child = fork();
    if (child == 0) _exit(body());
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

TEST(Writing, WritesAllOfAText) {
    const Pipe pipe;
    EXPECT_EQ(writeAll(pipe.writer(), "text"), WriteOutcome::WRITTEN);
    std::array<char, 8> buffer{};
    EXPECT_EQ(read(pipe.reader(), buffer.data(), buffer.size()), 4);
    EXPECT_EQ(std::string(buffer.data()), "text");
}

TEST(Writing, ReportsAClosedPipeAndAFailure) {
    EXPECT_EQ(resultInChild([] {
                  ignoreClosedPipes();
                  Pipe pipe;
                  pipe.closeReader();
                  return writeAll(pipe.writer(), "text") == WriteOutcome::PIPE_CLOSED ? 0 : 1;
              }),
              0);
    EXPECT_EQ(writeAll(-1, "text"), WriteOutcome::FAILED);
    EXPECT_EQ(writeAll(-1, ""), WriteOutcome::WRITTEN);
}

TEST(StandardDescriptors, AreOpenedIfTheyAreClosed) {
    EXPECT_EQ(resultInChild([] {
                  close(STDIN_FILENO);
                  close(STDOUT_FILENO);
                  openMissingStandardDescriptors();
                  const bool isFree = dup(STDERR_FILENO) <= STDOUT_FILENO;
                  return !isFree && writeAll(STDOUT_FILENO, "text") == WriteOutcome::FAILED ? 0 : 1;
              }),
              0);
}

TEST(TheWaitForInput, EndsAfterAWrite) {
    const Pipe pipe;
    writeAll(pipe.writer(), "x");
    waitForInput(pipe.reader());
    EXPECT_EQ(finishingSignal(), 0);
}

TEST(TheWaitForInput, EndsInEveryThreadOnRequest) {
    EXPECT_EQ(resultInChild([] {
                  const Pipe pipe;
                  catchSignals();
                  std::thread waiting([&pipe] { waitForInput(pipe.reader()); });
                  finishWithoutSignal();
                  waiting.join();
                  return finishingSignal() == NO_SIGNAL ? 0 : 1;
              }),
              0);
}

TEST(TheWaitForInput, KeepsTheSignalThatEndedIt) {
    EXPECT_EQ(resultInChild([] {
                  catchSignals();
                  std::raise(SIGINT);
                  finishWithoutSignal();
                  return finishingSignal();
              }),
              SIGINT);
}

class FinishingSignal : public testing::TestWithParam<int> {};

TEST_P(FinishingSignal, EndsTheWaitForInput) {
    const int signal = GetParam();
    EXPECT_EQ(resultInChild([signal] {
                  const Pipe pipe;
                  catchSignals();
                  std::raise(signal);
                  waitForInput(pipe.reader());
                  return finishingSignal();
              }),
              signal);
}

TEST_P(FinishingSignal, EndsTheProgramTheSecondTime) {
    const int signal = GetParam();
    EXPECT_EQ(resultInChild([signal] {
                  catchSignals();
                  std::raise(signal);
                  std::raise(signal);
                  return 0;
              }),
              -signal);
}

TEST_P(FinishingSignal, StaysIgnoredIfTheParentIgnoresIt) {
    const int signal = GetParam();
    EXPECT_EQ(resultInChild([signal] {
                  std::signal(signal, SIG_IGN);
                  catchSignals();
                  std::raise(signal);
                  return finishingSignal();
              }),
              0);
}

TEST_P(FinishingSignal, IsLeftToOtherThreads) {
    const int signal = GetParam();
    EXPECT_EQ(resultInChild([signal] {
                  catchSignals();
                  blockFinishingSignals();
                  std::raise(signal);
                  return finishingSignal();
              }),
              0);
}

INSTANTIATE_TEST_SUITE_P(All, FinishingSignal, testing::Values(SIGINT, SIGTERM, SIGHUP));

}  // namespace
}  // namespace Tools
