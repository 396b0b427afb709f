#include "tools/common/Process.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
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

// The exit code of a child that runs `body`, or minus the signal that ended it. A job in the background ignores some
// signals; the child does not. ThreadSanitizer writes what stdout holds even in _exit, and `body` may have closed it.
int resultInChild(const std::function<int()>& body) {
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, SIG_DFL);
        _exit(body());
    }
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

TEST(Writing, EndsTheProgramAtAClosedPipeByDefault) {
    EXPECT_EQ(resultInChild([] {
                  std::signal(SIGPIPE, SIG_DFL);
                  Pipe pipe;
                  pipe.closeReader();
                  writeAll(pipe.writer(), "text");
                  return 0;
              }),
              -SIGPIPE);
}

TEST(Writing, LeavesTheReasonOfAFailureInErrno) {
    EXPECT_EQ(writeAll(-1, "text"), WriteOutcome::FAILED);
    EXPECT_EQ(errno, EBADF);
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    EXPECT_EQ(writeAll(full, "text"), WriteOutcome::FAILED);
    EXPECT_EQ(errno, ENOSPC);
    close(full);
}

std::atomic<int> interruptions = 0;

// Makes the signal SIGUSR1 interrupt the calls of the system instead of starting them again.
void countInterruptions() {
    struct sigaction action {};
    action.sa_handler = [](int /*signal*/) { ++interruptions; };
    sigaction(SIGUSR1, &action, nullptr);
    interruptions = 0;
}

// One signal may come just before a call, which then waits: a second one ends it.
void interrupt(pthread_t thread) {
    const int before = interruptions;
    while (interruptions == before) {
        pthread_kill(thread, SIGUSR1);
        std::this_thread::yield();
    }
}

// The text is larger than a pipe, so that the writer waits for the reader. The first signal ends a call that has
// written a part, the second one a call that has written nothing.
TEST(Writing, GoesOnAfterASignal) {
    countInterruptions();
    const Pipe pipe;
    const std::string text = std::string(500000, 'a') + std::string(500000, 'b');
    std::string arrived;
    std::thread reading([&, writer = pthread_self()] {
        std::array<char, 10000> block{};
        while (arrived.size() < text.size()) {
            interrupt(writer);
            interrupt(writer);
            const ssize_t count = read(pipe.reader(), block.data(), block.size());
            if (count > 0) arrived.append(block.data(), static_cast<std::size_t>(count));
        }
    });
    const WriteOutcome outcome = writeAll(pipe.writer(), text);
    if (outcome != WriteOutcome::WRITTEN) writeAll(pipe.writer(), text);
    reading.join();
    EXPECT_EQ(outcome, WriteOutcome::WRITTEN);
    EXPECT_TRUE(arrived == text);
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

class AClosedStandardDescriptor : public testing::TestWithParam<int> {};

TEST_P(AClosedStandardDescriptor, IsOpenedForTheOtherDirection) {
    const int descriptor = GetParam();
    EXPECT_EQ(resultInChild([descriptor] {
                  close(descriptor);
                  openMissingStandardDescriptors();
                  const int mode = fcntl(descriptor, F_GETFL) & O_ACCMODE;
                  return mode == (descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY) ? 0 : 1;
              }),
              0);
}

TEST_P(AClosedStandardDescriptor, LeavesTheOthersAsTheyAre) {
    const int descriptor = GetParam();
    EXPECT_EQ(resultInChild([descriptor] {
                  openMissingStandardDescriptors();  // otherwise the pipe may be one of them
                  const Pipe pipe;
                  const int other = (descriptor + 1) % 3;
                  dup2(pipe.writer(), other);
                  close(descriptor);
                  openMissingStandardDescriptors();
                  writeAll(other, "x");
                  char byte = 0;
                  return read(pipe.reader(), &byte, 1) == 1 && byte == 'x' ? 0 : 1;
              }),
              0);
}

INSTANTIATE_TEST_SUITE_P(All, AClosedStandardDescriptor, testing::Values(STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO));

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

TEST(TheWaitForInput, EndsAtTheEndOfTheInput) {
    EXPECT_EQ(resultInChild([] {
                  Pipe pipe;
                  close(pipe.ends[1]);
                  waitForInput(pipe.reader());
                  return finishingSignal();
              }),
              0);
}

// Other signals interrupt the wait, and no input is there yet.
TEST(TheWaitForInput, GoesOnAfterAnotherSignal) {
    countInterruptions();
    const Pipe pipe;
    std::thread interrupting([&pipe, waiter = pthread_self()] {
        for (int i = 0; i < 1000; ++i) interrupt(waiter);
        writeAll(pipe.writer(), "x");
    });
    waitForInput(pipe.reader());
    EXPECT_GE(interruptions, 1000);
    interrupting.join();
}

TEST(TheWaitForInput, DoesNotBeginAfterARequest) {
    EXPECT_EQ(resultInChild([] {
                  const Pipe pipe;
                  finishWithoutSignal();
                  waitForInput(pipe.reader());
                  return finishingSignal() == NO_SIGNAL ? 0 : 1;
              }),
              0);
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
