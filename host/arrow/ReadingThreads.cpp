#include "host/arrow/ReadingThreads.h"

#include <arrow/io/interfaces.h>
#include <arrow/util/future.h>
#include <arrow/util/thread_pool.h>

#include <cerrno>
#include <future>
#include <system_error>
#include <vector>

#include "common/MCAssert.h"

namespace MCHost {

namespace {

// Has the pool start all its threads, and what each of them needs for good: a reader that cannot
// have one in the midst of its work may wait for it for ever. Throws std::system_error.
void StartAll(arrow::internal::Executor& pool) {
  std::promise<void> allStarted;
  const std::shared_future<void> gate = allStarted.get_future().share();
  std::vector<arrow::Future<>> tasks;
  for (int i = 0; i < pool.GetCapacity(); ++i) {
    // A thread that has nothing to do would take the next one's task.
    auto task = pool.Submit([gate] { gate.wait(); });
    if (!task.ok()) {
      throw std::system_error(EAGAIN, std::generic_category(), "no thread can be started");
    }
    tasks.push_back(*task);
  }
  allStarted.set_value();
  for (const arrow::Future<>& task : tasks) task.Wait();
}

}  // namespace

void SetReadingThreads(int threads) {
  const bool isSet = arrow::SetCpuThreadPoolCapacity(threads).ok() &&
                     arrow::io::SetIOThreadPoolCapacity(threads).ok();
  MCCommon::Assert(isSet, "the number of threads is positive", "host/arrow/ReadingThreads");
  StartAll(*arrow::internal::GetCpuThreadPool());
  StartAll(*arrow::io::default_io_context().executor());
}

}  // namespace MCHost
