#pragma once

#include <string_view>

namespace Tools {

// Opens /dev/null for each of standard input, output and error that is closed, so that no other file gets its
// descriptor. Reading standard input, or writing the others, still fails.
void openMissingStandardDescriptors();

enum class WriteOutcome { WRITTEN, PIPE_CLOSED, FAILED };

// Writes all of `text`. After a failure the reason is in errno.
WriteOutcome writeAll(int descriptor, std::string_view text);

// Makes writing to a closed pipe fail; by default it ends the program.
void ignoreClosedPipes();

// From now on SIGINT, SIGTERM and SIGHUP ask the program to finish, except those that the parent process has set to be
// ignored. A second signal of the same kind ends the program at once.
void catchSignals();

// Returns the signal that asked the program to finish, NO_SIGNAL after finishWithoutSignal(), or 0.
int finishingSignal();
constexpr int NO_SIGNAL = -1;

// Ends the waits for input in all threads, as a signal does. REQUIRES: catchSignals() was called.
void finishWithoutSignal();

// Waits until `descriptor` has input or the program is asked to finish.
void waitForInput(int descriptor);

// Blocks the signals of catchSignals in the calling thread, so that another thread receives them.
void blockFinishingSignals();

}  // namespace Tools
