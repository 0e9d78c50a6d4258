// `predselect run`: commands over a table.
#pragma once

namespace PredSelectApp {

struct Options;

// Runs every command of the text, shows the results and writes the files asked for. Returns the
// exit code. Throws MCHost::HostIOError, UsageError, PredSelect::RequestError.
int RunCommands(const Options& options);

}  // namespace PredSelectApp
