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
  fTask.fbEnd = true;
  ++fTask.fRound;
  {
    const std::lock_guard lock(fMutex);
    fWake.notify_all();
  }
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

void Workers::DealOut(std::size_t n) {
  if (fvShares.empty()) fvShares = std::vector<Share>(fNThreads);
  for (std::size_t k = 0; k < fNThreads; ++k) {
    fvShares[k].fNext = n * k / fNThreads;
    fvShares[k].fEnd = n * (k + 1) / fNThreads;
    fvShares[k].fGrain = std::max<std::size_t>(n / (fNThreads * kGrains), 1);
  }
}

void Workers::Serve(std::size_t worker) {
  for (std::uint32_t round = 0;;) {
    AwaitTask(round);
    if (fTask.fbEnd) return;
    round = fTask.fRound;
    if (!Join()) continue;
    RunTask(*fTask.fpTask, worker);
    Leave();
  }
}

// The caller looks who is asleep after the new round has begun, and a thread looks for it once more
// after it has said that it sleeps, so that one of them notices.
void Workers::AwaitTask(std::uint32_t round) {
  const auto isThere = [&] { return fTask.fRound != round; };
  LookFor(isThere);
  if (isThere()) return;
  std::unique_lock lock(fMutex);
  ++fTask.fNAsleep;
  fWake.wait(lock, isThere);
  --fTask.fNAsleep;
}

bool Workers::Join() {
  if ((fTask.fJoined.fetch_add(1) & kIsClosed) == 0) return true;
  Leave();
  return false;
}

void Workers::Leave() {
  if (fTask.fJoined.fetch_sub(1) != (kIsClosed | kIsAwaited | 1U)) return;
  const std::lock_guard lock(fMutex);
  fRest.notify_one();
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
  fTask.fpTask = &task;
  fTask.fbOver = false;
  fTask.fJoined &= ~kIsClosed;
  ++fTask.fRound;
  if (fTask.fNAsleep > 0) {
    const std::lock_guard lock(fMutex);
    fWake.notify_all();
  }
  RunTask(task, 0);
  AwaitOthers();
  if (fpFailure) std::rethrow_exception(std::exchange(fpFailure, nullptr));
}

void Workers::AwaitOthers() {
  const auto haveLeft = [this] { return (fTask.fJoined & ~(kIsClosed | kIsAwaited)) == 0; };
  fTask.fJoined |= kIsClosed;
  LookFor(haveLeft);
  if (haveLeft()) return;
  std::unique_lock lock(fMutex);
  fTask.fJoined |= kIsAwaited;
  fRest.wait(lock, haveLeft);
  fTask.fJoined &= ~kIsAwaited;
}

}  // namespace MCCommon
