// The command "predselect score".
#pragma once

namespace PredSelectApp {

struct Options;

// Predicts the cases of a table with a saved model and writes the table with the predictions.
// Returns the exit code. Throws MCHost::HostIOError, UsageError, PredSelect::RequestError.
int ScoreData(const Options& options);

}  // namespace PredSelectApp
