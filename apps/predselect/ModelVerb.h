// The command "model".
#pragma once

namespace PredSelectApp {

struct Options;

// Builds a model over the data, and writes what it is worth and the files that are asked for.
// Returns the exit code; throws as OpenTable and WriteDocument do, PredSelect::RequestError.
int ModelData(const Options& options);

}  // namespace PredSelectApp
