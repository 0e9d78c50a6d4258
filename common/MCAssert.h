// Broken invariants: errors of this program's own, not of its user.
//
// A failed assertion goes to the one handler of the process. The default handler prints the text
// and its source to standard error and ends the program with code 70; a host may install another
// (to remove temporary files first, or to show the text its own way). A handler must not return.
#pragma once

namespace MCCommon {

inline constexpr int kBrokenInvariantExitCode = 70;

using AssertionHandler = void (*)(const char* text, const char* source);

// Installs a handler (null for the default) and returns the one before.
AssertionHandler SetAssertionHandler(AssertionHandler handler);

[[noreturn]] void AssertionFailed(const char* text, const char* source);

// `text` is the condition in words, `source` the unit that relies on it, such as
// "backend/predselect/PRSMultiFactory".
inline void Assert(bool condition, const char* text, const char* source) {
  if (!condition) [[unlikely]]
    AssertionFailed(text, source);
}

}  // namespace MCCommon
