// From the data options of the command line to a table whose dictionary is settled.
#pragma once

#include <memory>

namespace MCHost {
class DataTable;
}

namespace PredSelectApp {

struct DataOptions;
struct Options;
class ProgressLine;

// Opens the data, applies the schema, the levels and the weight, and settles the levels that nobody
// gave; the progress line says how much has been read. Throws MCHost::HostIOError for files and for
// data that the memory does not hold, UsageError and PredSelect::RequestError for what the options
// say.
std::unique_ptr<MCHost::DataTable> OpenTable(const DataOptions& options, ProgressLine& progress);

// Kilobytes for the cases of a command over a table that is open: what a given memory leaves beside
// the cells that the table keeps, at least half of it; without one, half of what is free. Throws
// PredSelect::RequestError where the system does not say.
double MemoryForCases(const Options& options, const MCHost::DataTable& table);

}  // namespace PredSelectApp
