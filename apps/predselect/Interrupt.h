// Ctrl-C and termination: the first one asks the run to stop at its next poll, the second one ends
// the program at once. Either way no temporary file stays behind.
#pragma once

namespace PredSelectApp {

// Installs the handlers for SIGINT, SIGTERM and SIGHUP, and makes a closed pipe a write error.
// Also makes a broken invariant remove temporary files before it ends the program.
void InstallInterruptHandlers();

// True once the user asked to stop.
bool IsInterrupted();

}  // namespace PredSelectApp
