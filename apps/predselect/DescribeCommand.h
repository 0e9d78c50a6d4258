// `predselect describe`: the dictionary of a table.
#pragma once

namespace PredSelectApp {

struct Options;

// Shows names, types, levels, valid and missing cases, ranges or categories, labels. Returns the
// exit code. Throws MCHost::HostIOError, UsageError, PredSelect::RequestError.
int DescribeData(const Options& options);

}  // namespace PredSelectApp
