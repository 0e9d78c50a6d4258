// The commands that a call runs.
#pragma once

#include <string>

namespace MCHost {
class DataTable;
}

namespace PredSelectApp {

struct Options;

// Those of `run`: of -c, several as one text, or of the file of -f. Throws MCHost::HostIOError,
// UsageError.
std::string ReadCommandText(const Options& options);

// Those of `run`, or that `rank` and `model` stand for. Throws PredSelect::RequestError, too.
std::string CommandTextOf(const Options& options, const MCHost::DataTable& table);

}  // namespace PredSelectApp
