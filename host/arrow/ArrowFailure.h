// Turns the failures of the file format library into the host's.
#pragma once

#include <arrow/result.h>
#include <arrow/status.h>

#include <string>
#include <utility>

namespace MCHost {

// Throws HostIOError with the status' message unless it is OK, std::bad_alloc where it is want of
// memory. `file` names the file in the message.
void Check(const arrow::Status& status, const std::string& file);

// The value, or a HostIOError.
template <class T>
T Value(arrow::Result<T> result, const std::string& file) {
  Check(result.status(), file);
  return std::move(result).ValueUnsafe();
}

}  // namespace MCHost
