#include "apps/predselect/Interrupt.h"

#include <signal.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <system_error>
#include <thread>

#include "apps/predselect/Allocation.h"
#include "apps/predselect/ExitCode.h"
#include "apps/predselect/ProgressLine.h"
#include "common/MCAssert.h"
#include "host/session/Unfinished.h"

namespace PredSelectApp {

namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};
constexpr timespec kPatience{0, 100'000'000};  // that a run has to stop by itself

std::atomic<bool> gInterrupted{false};
std::atomic<bool> gSaid{false};
std::atomic<bool> gTypedToAnother{false};

// One line, whatever ends the program. Nothing from here on locks, allocates or unwinds.
template <std::size_t kSize>
void SayOnce(const char (&line)[kSize]) {
  if (gSaid.exchange(true)) return;
  ProgressLine::Erase();
  (void)!write(STDERR_FILENO, line, kSize - 1);
}

[[noreturn]] void EndAtOnce() {
  MCHost::RemoveUnfinished();
  SayStopped();
  _exit(kCancelled);
}

// A mapped file has become shorter, or its disk fails: what is read is no longer there.
void EndWithoutFile(int) {
  MCHost::RemoveUnfinished();
  SayOnce(
      "predselect: a file could not be read to its end: it was cut short meanwhile, or its disk "
      "failed.\n");
  _exit(kDataError);
}

bool IsIgnored(int number) {
  struct sigaction action {};
  return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

// Those that the program is to obey.
sigset_t OwnSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : kSignals) {
    if (!IsIgnored(number)) sigaddset(&signals, number);
  }
  return signals;
}

void EndEarly(int) { EndAtOnce(); }

void EndAtSignals() {
  struct sigaction action {};
  action.sa_handler = EndEarly;
  sigfillset(&action.sa_mask);
  for (const int number : kSignals) {
    if (!IsIgnored(number)) sigaction(number, &action, nullptr);
  }
}

// Before the libraries set themselves up.
__attribute__((section(".preinit_array"), used)) void (*const gBeforeAll)() = EndAtSignals;

// A thread of its own hears a signal also while all others wait for a disk.
void Watch(sigset_t signals) {
  int number = 0;
  while (sigwait(&signals, &number) != 0 || (number == SIGINT && gTypedToAnother)) {
  }
  gInterrupted = true;
  while (sigtimedwait(&signals, nullptr, &kPatience) < 0 && errno == EINTR) {
  }
  EndAtOnce();
}

void OnBrokenInvariant(const char* text, const char* source) {
  MCHost::RemoveUnfinished();
  std::fprintf(stderr,
               "predselect: internal error in %s: the condition \"%s\" does not hold.\n"
               "This is a fault of the program, not of your data; please report it.\n",
               source, text);
  std::fflush(nullptr);
  std::_Exit(kBrokenInvariant);
}

// Something was thrown where nothing may be: as a rule what is destroyed while memory is out, or
// what the standard library takes for impossible.
void OnTerminate() {
  if (HasMemoryFailed()) EndWithoutMemory();
  try {
    if (std::current_exception()) throw;
  } catch (const std::bad_alloc&) {
    EndWithoutMemory();
  } catch (const std::exception& error) {
    OnBrokenInvariant(error.what(), "std::terminate");
  } catch (...) {
  }
  OnBrokenInvariant("nothing is thrown where nothing may be", "std::terminate");
}

}  // namespace

void InstallInterruptHandlers() {
  signal(SIGBUS, EndWithoutFile);
  const sigset_t signals = OwnSignals();
  // All threads to come have them blocked, too.
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  try {
    std::thread(Watch, signals).detach();
  } catch (const std::system_error&) {
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);  // they go on ending the program at once
  }
  // What these would end is told by the call that has failed.
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);
  MCCommon::SetAssertionHandler(OnBrokenInvariant);
  std::set_terminate(OnTerminate);
}

KeyboardOfAnother::KeyboardOfAnother() { gTypedToAnother = true; }
KeyboardOfAnother::~KeyboardOfAnother() { gTypedToAnother = false; }

bool IsInterrupted() { return gInterrupted; }

void SayNothing() { gSaid = true; }

void SayStopped() noexcept { SayOnce("predselect: stopped at your wish.\n"); }

}  // namespace PredSelectApp
