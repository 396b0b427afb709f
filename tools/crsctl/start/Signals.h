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

// Whether reading `descriptor` would not wait.
bool hasInput(int descriptor);

// From now on the calling thread receives no signal that another thread could.
void leaveSignalsToOthers();

}  // namespace crsctl
