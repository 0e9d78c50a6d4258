// What the program's exit code says. Documented in the command reference; do not renumber.
#pragma once

#include "operations/Surroundings.h"

namespace PredSelectApp {

enum ExitCode {
  kCompleted = 0,         // all commands completed
  kCommandError = 1,      // a command reported an error
  kWrongUsage = 2,        // the command line was wrong
  kDataError = 3,         // data, a command file or a result could not be read or written
  kBrokenInvariant = 70,  // an error of the program's own
  kCancelled = 130        // stopped by the user
};

inline ExitCode ExitCodeOf(PredSelect::Outcome outcome) {
  if (outcome == PredSelect::Outcome::kCancelled) return kCancelled;
  return outcome == PredSelect::Outcome::kCompleted ? kCompleted : kCommandError;
}

}  // namespace PredSelectApp
