#include "host/arrow/ReadingThreads.h"

#include <arrow/io/interfaces.h>
#include <arrow/util/thread_pool.h>

#include "common/MCAssert.h"

namespace MCHost {

void SetReadingThreads(int threads) {
  const bool isSet = arrow::SetCpuThreadPoolCapacity(threads).ok() &&
                     arrow::io::SetIOThreadPoolCapacity(threads).ok();
  MCCommon::Assert(isSet, "the number of threads is positive", "host/arrow/ReadingThreads");
}

}  // namespace MCHost
