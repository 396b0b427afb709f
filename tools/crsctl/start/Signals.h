#pragma once

namespace crsctl {

// From now on writing to a closed pipe fails instead of ending the program.
void ignoreClosedPipes();

// From now on interrupt, hang-up and termination ask the program to finish, unless whoever started it had it ignore
// them. A second one of its kind ends it at once.
void catchSignals();

// The signal that asked the program to finish, or 0.
int signalToFinish();

// Waits until `descriptor` has something to read or a signal asks to finish; a signal that came before counts.
void waitForInput(int descriptor);

// For a worker: whatever the terminal sends is the parent's to answer.
void ignoreSignals();

}  // namespace crsctl
