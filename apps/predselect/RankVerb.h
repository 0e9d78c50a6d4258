// The command "rank".
#pragma once

namespace PredSelectApp {

struct Options;

// Ranks the columns of the data and writes the ranking. Returns the exit code; throws as OpenTable
// and WriteDocument do, PredSelect::RequestError.
int RankData(const Options& options);

}  // namespace PredSelectApp
