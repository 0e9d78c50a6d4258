// The command "evaluate".
#pragma once

namespace PredSelectApp {

struct Options;

// Writes how good a saved model is on the cases of a table. Returns the exit code. Throws
// MCHost::HostIOError, UsageError, PredSelect::RequestError.
int EvaluateModel(const Options& options);

}  // namespace PredSelectApp
