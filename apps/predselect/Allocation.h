// What becomes of the program when memory ends.
//
// Its own code unwinds, and says what takes less. The libraries that read and write files and
// documents do not come through a failed allocation: they deadlock, jump through null or end the
// program without a word. So it ends at once where one of them is on the stack: with a message,
// exit code kDataError, and no file begun or changed.
#pragma once

namespace PredSelectApp {

// Where there is no room for more, either.
inline constexpr char kNoMemoryText[] =
    "predselect: there is not enough memory for what the program is to do.\n";

// Says so and ends, without unwinding. For any thread.
[[noreturn]] void EndWithoutMemory() noexcept;

// Whether an allocation has failed on this thread, however long ago.
bool HasMemoryFailed() noexcept;

}  // namespace PredSelectApp
