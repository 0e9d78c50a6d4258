#include "common/Workers.h"

#include <system_error>
#include <utility>

#include "common/WithoutSignals.h"

namespace MCCommon {

namespace {

// How often a thread looks for what it awaits before it sleeps, some tens of microseconds in all:
// tasks follow each other closely, and a sleeper takes longer to wake than many a task lasts. It
// does not yield meanwhile, since on a busy machine it would come back much too late.
constexpr int kLooks = 3000;

void Pause() {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#elif defined(__aarch64__)
  asm volatile("yield");
#endif
}

template <class Ready>
void LookFor(Ready ready) {
  for (int look = 0; look < kLooks && !ready(); ++look) Pause();
}

}  // namespace

Workers& Workers::Alone() {
  static Workers alone;
  return alone;
}

Workers::~Workers() {
  {
    const std::lock_guard lock(fMutex);
    fbEnd = true;
    ++fRound;
  }
  fWake.notify_all();
  for (std::thread& thread : fvThreads) thread.join();
}

void Workers::Start() {
  fbStarted = true;
  fvThreads.reserve(fNThreads - 1);
  const WithoutSignals kept;
  try {
    while (fvThreads.size() + 1 < fNThreads) {
      fvThreads.emplace_back(&Workers::Serve, this, fvThreads.size() + 1);
    }
  } catch (const std::system_error&) {
    // Those that did start will do.
  }
}

void Workers::Serve(std::size_t worker) {
  std::uint64_t round = 0;
  for (;;) {
    LookFor([&] { return fRound != round; });
    std::unique_lock lock(fMutex);
    fWake.wait(lock, [&] { return fRound != round; });
    if (fbEnd) return;
    round = fRound;
    const Task* task = fpTask;
    if (task == nullptr) continue;  // too late for it
    ++fNBusy;
    lock.unlock();
    RunTask(*task, worker);
    lock.lock();
    if (--fNBusy == 0) fRest.notify_one();
  }
}

void Workers::RunTask(const Task& task, std::size_t worker) {
  try {
    task(worker);
  } catch (...) {
    const std::lock_guard lock(fMutex);
    if (!fpFailure) fpFailure = std::current_exception();
  }
}

void Workers::Together(const Task& task) {
  if (!fbStarted) Start();
  {
    const std::lock_guard lock(fMutex);
    fpTask = &task;
    ++fRound;
  }
  fWake.notify_all();
  RunTask(task, 0);
  AwaitOthers();
  if (fpFailure) std::rethrow_exception(std::exchange(fpFailure, nullptr));
}

void Workers::AwaitOthers() {
  {
    const std::lock_guard lock(fMutex);
    fpTask = nullptr;
  }
  LookFor([this] { return fNBusy == 0; });
  std::unique_lock lock(fMutex);
  fRest.wait(lock, [this] { return fNBusy == 0; });
}

}  // namespace MCCommon
