// Tells a run of the results which variables it has added to the table.
#pragma once

namespace MCHost {
class DataTable;
struct OutputRun;
}  // namespace MCHost

namespace PredSelectApp {

// Those from the column `before` on.
void RecordNewVariables(const MCHost::DataTable& table, int before, MCHost::OutputRun& run);

}  // namespace PredSelectApp
