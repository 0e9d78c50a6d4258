// What keeps want of memory inside the component: it is a status like any other failure.
#pragma once

#include <new>
#include <stdexcept>

#include "naivebayes/MCStatus.h"

namespace MCNaive {

// Runs an operation that gives a status; 70021 when it asks for more memory than there is, or than
// any container may hold.
template <typename Operation>
MCStatus WithinMemory(Operation operation) {
  try {
    return operation();
  } catch (const std::bad_alloc&) {
    return Error(kNoMemory);
  } catch (const std::length_error&) {
    return Error(kNoMemory);
  }
}

}  // namespace MCNaive
