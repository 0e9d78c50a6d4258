// The command "predselect view".
#pragma once

namespace PredSelectApp {

struct Options;

// Shows a saved state or a JSON document as a report: in the file that the options name, or in the
// user's browser, from a file of which nobody else can read, and which is there until the user ends
// the command. Nothing listens. Returns the exit code.
// Throws MCHost::HostIOError; UsageError where there is neither a file to write nor a terminal.
int ViewFile(const Options& options);

}  // namespace PredSelectApp
