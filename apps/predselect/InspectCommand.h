// The command "predselect inspect".
#pragma once

namespace PredSelectApp {

struct Options;

// Shows what a state file holds. Returns the exit code.
// Throws MCHost::HostIOError for a file that cannot be read.
int InspectState(const Options& options);

}  // namespace PredSelectApp
