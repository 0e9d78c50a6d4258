#include "host/arrow/ArrowFailure.h"

#include <arrow/util/io_util.h>

#include <cstring>
#include <new>

#include "host/session/HostIOError.h"

namespace MCHost {

void Check(const arrow::Status& status, const std::string& file) {
  if (status.ok()) return;
  if (status.IsOutOfMemory()) throw std::bad_alloc();
  const int error = arrow::internal::ErrnoFromStatus(status);
  throw HostIOError(file, "", error != 0 ? std::strerror(error) : status.message());
}

}  // namespace MCHost
