// Ctrl-C and termination: the first one asks the run to stop at its next poll, and ends the program
// where it has not stopped by itself a moment later, whatever it is at. The second one ends it at
// once. Either way one line says so, and neither a temporary file nor an empty folder stays behind.
#pragma once

namespace PredSelectApp {

// Watches for SIGINT, SIGTERM and SIGHUP, but for those that whoever started the
// program has it ignore, and makes a closed pipe a write error. Until then, from the program's
// first moment on, each of them ends it. Also makes a broken invariant remove temporary files
// before it ends the program.
void InstallInterruptHandlers();

// True once the user asked to stop.
bool IsInterrupted();

// For as long as this lives, Ctrl-C is for the program that has the terminal, such as a pager.
struct KeyboardOfAnother {
  KeyboardOfAnother();
  ~KeyboardOfAnother();
  KeyboardOfAnother(const KeyboardOfAnother&) = delete;
  KeyboardOfAnother& operator=(const KeyboardOfAnother&) = delete;
};

// Says on standard error, once, that the program was stopped.
void SayStopped() noexcept;
// A process that helps another one leaves it to that.
void SayNothing();

}  // namespace PredSelectApp
