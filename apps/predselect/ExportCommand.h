// predselect export: a saved model as a file for other programs.
#pragma once

namespace PredSelectApp {

struct Options;

// Returns the exit code. Throws what the operations throw.
int ExportModel(const Options& options);

}  // namespace PredSelectApp
