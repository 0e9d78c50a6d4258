// Engines end in a status where others throw: so does work that cannot get the memory it needs.
#pragma once

#include <new>
#include <ostream>
#include <stdexcept>

#include "feature/MCStatus.h"

// The status of the work, or the error 80015 when memory was wanting: what the work had begun is
// then the caller's to undo.
template <class Work>
MCFeature::MCStatus FSWithinMemory(Work work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
  } catch (const std::length_error&) {
  }
  return MCFeature::Error(MCFeature::kOutOfMemory);
}

// The same for work that writes to a stream: one that it cannot end is left failed.
template <class Work>
MCFeature::MCStatus FSWithinMemory(std::ostream& out, Work work) {
  const MCFeature::MCStatus status = FSWithinMemory(work);
  if (status.GetErrorCode() == MCFeature::kOutOfMemory) out.setstate(std::ios_base::badbit);
  return status;
}

// For callers that throw where engines give a status: std::bad_alloc where memory was wanting.
inline void FSThrowWantOfMemory(const MCFeature::MCStatus& status) {
  if (status.GetErrorCode() == MCFeature::kOutOfMemory) throw std::bad_alloc();
}
