#pragma once

#include <string_view>

namespace Tools {

// Opens /dev/null in place of standard input, output or error where it is closed, so that no other file is opened
// there. Reading or writing such a descriptor still fails.
void occupyStandardDescriptors();

enum class WriteOutcome { WRITTEN, PIPE_CLOSED, FAILED };

// Writes all of `text`. The reason of a failure is in errno.
WriteOutcome writeAll(int descriptor, std::string_view text);

// Makes writing to a closed pipe fail; by default it ends the program.
void ignoreClosedPipes();

// Makes interrupt, hang-up and termination ask the program to finish, except those that the parent process had it
// ignore. A second signal of the same kind ends the program at once.
void catchSignals();

// The signal that asked the program to finish, or 0.
int signalToFinish();

// Waits until `descriptor` has input or a signal has asked the program to finish.
void waitForInput(int descriptor);

// Whether `descriptor` can be read without waiting.
bool hasInput(int descriptor);

// Blocks those signals in the calling thread, so that another thread receives them.
void leaveSignalsToOthers();

}  // namespace Tools
