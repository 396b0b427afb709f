// A host whose catalogue the library uses: ends with 0 when the library registered its entry there and asked it.

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "CoordinateTransformation/CoordinateTransformation.h"
#include "Messages.h"

namespace {

using CoordinateTransformation::Misconfigured;

void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "%s\n", what);
    std::exit(1);
}

msg::MessageHandler& catalogue() { return msg::MessageHandler::object(); }

bool wasAskedLast(const char* subsystem, const char* situation) {
    return !catalogue().asked.empty() && catalogue().asked.back() == msg::MessageHandler::Pair(subsystem, situation);
}

void requireTheEntryOfPlatformFaults() {
    require(catalogue().entries.size() == 1, "not one entry");
    const msg::MTE& entry = *catalogue().entries.front();
    require(entry.number == 0 && entry.language == "en", "another number or language");
    require(entry.subsystem == "exception" && entry.situation == "default", "another pair");
    require(
        entry.text ==
            "Meldung: Das Subsystem [&0] hat die Fehlersituation [&1] gemeldet. Text: [&2], Parameter sind 1: [&3], "
            "2: [&4], 3: [&5], usw.",
        "another text");
    require(entry.handler == nullptr && !entry.first && !entry.second, "another handler or flags");
}

void requireThatTheEntryIsFound() {
    const structured_exception fault("access violation", false, "exception", "default", 0, nullptr, false);
    require(fault.getCatalogMessage() == catalogue().entries.front()->text, "not the entry's text");
    require(wasAskedLast("exception", "default"), "asked for another pair");
}

void requireTheDefaultOfTheHost() {
    require(Misconfigured("text").getCatalogMessage() == std::string("the host's default"), "another default");
    require(wasAskedLast("CoordTransformation", "Misconfigured"), "asked for another pair");
}

// The parameters are read from the list that the caller handed in, which construction leaves null.
void requireAFaultForAKnownPairWithParameters() {
    const pid_t child = fork();
    if (child == 0) {
        std::signal(SIGSEGV, SIG_DFL);
        const msg::MTE entry(1, "en", "CoordTransformation", "Misconfigured", "[&0]", nullptr, false, false);
        Misconfigured("text").getCatalogMessage();
        _exit(0);
    }
    int status = 0;
    require(waitpid(child, &status, 0) == child && WIFSIGNALED(status) && WTERMSIG(status) == SIGSEGV, "no fault");
}

}  // namespace

int main() {
    requireTheEntryOfPlatformFaults();
    requireThatTheEntryIsFound();
    requireTheDefaultOfTheHost();
    requireAFaultForAKnownPairWithParameters();
}
