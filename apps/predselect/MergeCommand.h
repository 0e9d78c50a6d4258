// The command "predselect merge".
#pragma once

namespace PredSelectApp {

struct Options;

// Adds up the counts of several state files and writes them as one. Returns the exit code.
// Throws PredSelect::RequestError where they do not fit, MCHost::HostIOError for files.
int MergeStates(const Options& options);

}  // namespace PredSelectApp
