#include "tools/common/Process.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace Tools {
namespace {

constexpr std::array<int, 3> FINISHING_SIGNALS = {SIGINT, SIGTERM, SIGHUP};

std::atomic<int> caught = 0;
// A pipe to which the handler writes, so that a signal between the check of `caught` and poll() also ends the wait.
std::array<int, 2> wakeUp = {-1, -1};

void endWaits() {
    const char byte = 0;
    [[maybe_unused]] const ssize_t ignored = write(wakeUp[1], &byte, 1);
}

void noteSignal(int signal) {
    caught = signal;
    endWaits();
}

void setHandler(int signal, void (*handler)(int), int flags) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

bool isIgnored(int signal) {
    struct sigaction action {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

void openMissingStandardDescriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(descriptor, F_GETFD) < 0) open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

WriteOutcome writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(descriptor, text.data(), text.size());
        if (count >= 0) text.remove_prefix(static_cast<std::size_t>(count));
        if (count < 0 && errno == EPIPE) return WriteOutcome::PIPE_CLOSED;
        if (count < 0 && errno != EINTR) return WriteOutcome::FAILED;
    }
    return WriteOutcome::WRITTEN;
}

void ignoreClosedPipes() { setHandler(SIGPIPE, SIG_IGN, 0); }

void catchSignals() {
    if (wakeUp[0] < 0 && pipe2(wakeUp.data(), O_CLOEXEC | O_NONBLOCK) != 0) wakeUp = {-1, -1};
    for (const int signal : FINISHING_SIGNALS)
        if (!isIgnored(signal)) setHandler(signal, noteSignal, static_cast<int>(SA_RESETHAND));
}

int finishingSignal() { return caught; }

void finishWithoutSignal() {
    int none = 0;
    caught.compare_exchange_strong(none, NO_SIGNAL);
    endWaits();
}

void waitForInput(int descriptor) {
    std::array<pollfd, 2> watched = {pollfd{descriptor, POLLIN, 0}, pollfd{wakeUp[0], POLLIN, 0}};
    while (caught == 0 && poll(watched.data(), watched.size(), -1) < 0) continue;
}

void blockFinishingSignals() {
    sigset_t finishing;
    sigemptyset(&finishing);
    for (const int signal : FINISHING_SIGNALS) sigaddset(&finishing, signal);
    pthread_sigmask(SIG_BLOCK, &finishing, nullptr);
}

}  // namespace Tools
