// How many threads this process may have at work at once.
#pragma once

namespace PredSelect {

// What an operation can be given at most as Surroundings::fThreads.
inline constexpr int kMostThreads = 1024;

// The processors that the system lets this process run on, at least 1.
int AvailableThreads();

}  // namespace PredSelect
