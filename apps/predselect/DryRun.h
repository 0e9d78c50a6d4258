// Option --dry-run: what a call would read, use and write.
#pragma once

namespace PredSelectApp {

struct Options;

// Says so on standard output, and what is wrong with the commands on standard error. Nothing is
// written. Returns the exit code. Throws as the verbs themselves do.
int DryRun(const Options& options);

}  // namespace PredSelectApp
