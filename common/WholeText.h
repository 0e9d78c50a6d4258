// What was written to a string stream, which keeps want of memory to itself and goes on with a part.
#pragma once

#include <new>
#include <sstream>
#include <string>

namespace MCCommon {

// Throws std::bad_alloc where the text is not whole.
inline std::string WholeText(const std::ostringstream& text) {
  if (text.bad()) throw std::bad_alloc();
  return text.str();
}

}  // namespace MCCommon
