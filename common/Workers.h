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
    const std::size_t grain = std::max<std::size_t>(n / (fNThreads * kGrains), 1);
    std::atomic<std::size_t> next{0};
    std::atomic<bool> isOver{false};
    const auto share = [&](std::size_t worker) {
      for (std::size_t i = next.fetch_add(grain); i < n; i = next.fetch_add(grain)) {
        for (const std::size_t end = std::min(i + grain, n); i < end; ++i) {
          if (isOver || (worker == 0 && stop())) {
            isOver = true;
            return;
          }
          try {
            work(i, worker);
          } catch (...) {
            isOver = true;
            throw;
          }
        }
      }
    };
    Together(std::cref(share));
  }
  template <class Work>
  void ForEach(std::size_t n, Work work) {
    ForEach(n, work, [] { return false; });
  }

 private:
  using Task = std::function<void(std::size_t worker)>;

  static constexpr std::size_t kGrains = 16;  // a thread's, so that none waits long for another

  // Calls task(worker) on the caller's thread and on every other one that comes in time.
  void Together(const Task& task);
  void Start();
  void Serve(std::size_t worker);
  void RunTask(const Task& task, std::size_t worker);
  void AwaitOthers();

  std::size_t fNThreads;
  bool fbStarted = false;
  std::vector<std::thread> fvThreads;
  std::mutex fMutex;  // of all below
  std::condition_variable fWake;
  std::condition_variable fRest;
  const Task* fpTask = nullptr;          // to be joined in
  std::atomic<std::uint64_t> fRound{0};  // of tasks; the last one ends the threads
  std::atomic<std::size_t> fNBusy{0};    // threads besides the caller's
  bool fbEnd = false;
  std::exception_ptr fpFailure;  // the first of a task
};

}  // namespace MCCommon
