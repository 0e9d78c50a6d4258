// The two blocks of state that a session shares with the procedures it calls.
#pragma once

#include <cstdint>
#include <string>

// System block: what is being run.
struct CmaSys {
  std::string fCommandWord;  // first word of the current command, as typed
};

// Common block: the status word and the words that procedure processing can change. The procedure
// entry saves the three words below the status word and writes them back when it returns.
struct CmnGlb {
  static constexpr std::uint32_t kErrorBit = 1u;

  std::uint32_t fStatusWord = 0;  // bit 0: an error was raised during the current command
  std::int32_t fSplitFile = 0;    // not 0: split-file processing is in force
  std::int32_t fMaxObsAdded = 0;  // room reserved for new variables, in 8-byte values a case
  std::int32_t fLastPass = 0;     // not 0: the pass under way is the last one of the procedure

  bool IsErrorSet() const { return (fStatusWord & kErrorBit) != 0; }
  void SetError() { fStatusWord |= kErrorBit; }
};
