// How an engine's status is told to people: by a key of the displayed texts. The engines say which
// key belongs to which code (feature/StatusMessages.h, naivebayes/StatusMessages.h), so that every
// way in tells a status alike; the wording of a key is the host's.
#pragma once

#include <cstddef>
#include <cstdint>

namespace MCCommon {

struct StatusMessage {
  // What fills "^1" in the key's text.
  enum Argument {
    kNothing,
    kCode,       // the status code
    kVariable,   // the variable whose index is discrete datum 0; the code when there is none
    kTempFolder  // the folder of temporary files
  };

  std::int64_t fCode;
  const char* fKey;
  Argument fArgument;
};

// Null when the table does not hold the code.
template <std::size_t N>
const StatusMessage* FindMessage(const StatusMessage (&table)[N], std::int64_t code) {
  for (const StatusMessage& message : table) {
    if (message.fCode == code) return &message;
  }
  return nullptr;
}

}  // namespace MCCommon
