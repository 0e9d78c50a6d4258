// What a document is told of the data besides what the procedures send.
#pragma once

#include <cstdint>

namespace MCHost {
class ITable;
class OutputDocument;
struct OutputRun;
}  // namespace MCHost

namespace PredSelect {

// By which version and of how much data the results are.
void RecordData(MCHost::OutputDocument& document, std::int64_t cases, int variables);

// The variables that a run has added to the table: those from the column `before` on.
void RecordNewVariables(const MCHost::ITable& table, int before, MCHost::OutputRun& run);

}  // namespace PredSelect
