// Threads that share work out between them: the caller's own, and others that start with the first
// work worth it and end with the object.
//
// Which thread does what is left to chance, so a result must not depend on it: each index of the
// work touches what is its own, and what all have in common is put together afterwards, in the
// order of the indices. Whatever belongs to the user (iterators, listeners, cancel queries, random
// generators) is called on the caller's thread alone.
//
// Where other threads cannot be had, those that are there do the work. Used by one thread at a
// time, save where it has no threads but its callers'.
#pragma once

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace MCCommon {

class Workers {
 public:
  // Work of fewer steps (of a nanosecond or so) is done before another thread has heard of it.
  static constexpr std::size_t kWorthwhile = 16384;

  // Bytes that travel together between processors: what one thread writes and another uses
  // meanwhile should stand in different ones.
  static constexpr std::size_t kLine = 64;

  // So many threads together with the caller's; 1 or fewer: that alone.
  explicit Workers(int threads = 1) : fNThreads(static_cast<std::size_t>(std::max(threads, 1))) {}
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;
  ~Workers();

  // One without threads of its own, for any number of callers.
  static Workers& Alone();

  // How many there may be at work: each has a number below it, the caller's thread number 0.
  std::size_t Count() const { return fNThreads; }

  // Those to do work of so many steps: these, or the caller alone.
  Workers& For(std::size_t steps) { return steps < kWorthwhile ? Alone() : *this; }

  // Calls work(index, worker) once for each index below n, in ascending order where the caller is
  // alone. `stop` is asked on the caller's thread only, before each index that this takes; once it
  // is true no further index is begun. What work throws ends it in the same way, and is thrown on
  // the caller's thread when all have come to rest.
  template <class Work, class Stop>
  void ForEach(std::size_t n, Work work, Stop stop) {
    if (fNThreads == 1 || n < 2) {
      for (std::size_t i = 0; i < n && !stop(); ++i) work(i, std::size_t{0});
      return;
    }
    DealOut(n);
    const auto share = [&](std::size_t worker) { TakeShares(worker, work, stop); };
    Together(std::cref(share));
  }
  template <class Work>
  void ForEach(std::size_t n, Work work) {
    ForEach(n, work, [] { return false; });
  }

 private:
  using Task = std::function<void(std::size_t worker)>;

  static constexpr std::size_t kGrains = 16;  // of a share, so that none waits long for another

  // A stretch of the indices of a work, with which one of the threads begins: the same for each
  // work of so many, so that what belongs to an index stays where it is. Who is done helps others.
  struct alignas(kLine) Share {
    std::atomic<std::size_t> fNext{0};
    std::size_t fEnd = 0;
    std::size_t fGrain = 1;
  };

  void DealOut(std::size_t n);
  template <class Work, class Stop>
  void TakeShares(std::size_t worker, Work& work, Stop& stop) {
    for (std::size_t turn = 0; turn < fNThreads; ++turn) {
      Share& share = fvShares[(worker + turn) % fNThreads];
      for (std::size_t first; (first = share.fNext.fetch_add(share.fGrain)) < share.fEnd;) {
        const std::size_t end = std::min(first + share.fGrain, share.fEnd);
        for (std::size_t i = first; i < end; ++i) {
          if (!TakeOne(i, worker, work, stop)) return;
        }
      }
    }
  }
  // False when no further index is to be begun.
  template <class Work, class Stop>
  bool TakeOne(std::size_t i, std::size_t worker, Work& work, Stop& stop) {
    if (fTask.fbOver || (worker == 0 && stop())) {
      fTask.fbOver = true;
      return false;
    }
    try {
      work(i, worker);
      return true;
    } catch (...) {
      fTask.fbOver = true;
      throw;
    }
  }

  // Calls task(worker) on the caller's thread and on every other one that comes in time.
  void Together(const Task& task);
  void Start();
  void Serve(std::size_t worker);
  void AwaitTask(std::uint32_t round);
  bool Join();
  void Leave();
  void RunTask(const Task& task, std::size_t worker);
  void AwaitOthers();

  static constexpr std::uint32_t kIsClosed = 1U << 31;   // it is too late to join
  static constexpr std::uint32_t kIsAwaited = 1U << 30;  // the caller sleeps until all have left
  // What threads tell each other of a task: one line, which no other numbers make travel.
  struct alignas(kLine) TaskInHand {
    const Task* fpTask = nullptr;
    std::atomic<std::uint32_t> fRound{0};           // of tasks; the last one ends the threads
    std::atomic<std::uint32_t> fJoined{kIsClosed};  // threads besides the caller's, and flags
    std::atomic<std::uint32_t> fNAsleep{0};         // threads that have to be woken
    std::atomic<bool> fbOver{false};                // no further index is begun
    std::atomic<bool> fbEnd{false};
  };

  std::size_t fNThreads;
  std::vector<std::thread> fvThreads;
  bool fbStarted = false;
  std::vector<Share> fvShares;
  TaskInHand fTask;
  std::mutex fMutex;  // of sleep, and of the failure
  std::condition_variable fWake;
  std::condition_variable fRest;
  std::exception_ptr fpFailure;  // the first of a task
};

}  // namespace MCCommon
