#include "apps/predselect/Interrupt.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "apps/predselect/ExitCode.h"
#include "common/MCAssert.h"
#include "host/session/TemporaryFile.h"

namespace PredSelectApp {

namespace {

volatile std::sig_atomic_t gInterrupted = 0;

void OnInterrupt(int) {
  if (gInterrupted != 0) {
    MCHost::RemoveTemporaryFiles();
    std::_Exit(kCancelled);
  }
  gInterrupted = 1;
}

void OnBrokenInvariant(const char* text, const char* source) {
  MCHost::RemoveTemporaryFiles();
  std::fprintf(stderr,
               "predselect: internal error in %s: the condition \"%s\" does not hold.\n"
               "This is a fault of the program, not of your data; please report it.\n",
               source, text);
  std::fflush(nullptr);
  std::_Exit(kBrokenInvariant);
}

}  // namespace

void InstallInterruptHandlers() {
  std::signal(SIGINT, OnInterrupt);
  std::signal(SIGTERM, OnInterrupt);
  // The terminal was closed, unless the run was started to outlive it.
  if (std::signal(SIGHUP, OnInterrupt) == SIG_IGN) std::signal(SIGHUP, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN);
  MCCommon::SetAssertionHandler(OnBrokenInvariant);
}

bool IsInterrupted() { return gInterrupted != 0; }

}  // namespace PredSelectApp
