// The tables of `describe`.
#pragma once

#include <cstddef>
#include <vector>

namespace PredSelect {

class ColumnSummary;

// Why the variable has its level (see MCHost::SettleMeasurementLevels): a key of the string table.
// REQUIRES: the summary is finished.
const char* LevelReason(const ColumnSummary& summary);

// Shows, in the current session's output, all that is known of each variable, for programs
// (Dictionary, MostFrequent). REQUIRES: the summaries are finished.
void ShowForPrograms(const std::vector<ColumnSummary>& summaries);

// Shows a page with a line a variable: numbers on a scale, dates and times, categories. `nShown` of
// the variables have a line, the first ones. REQUIRES: the summaries are finished.
void ShowDescription(const std::vector<ColumnSummary>& summaries, double nCases,
                     std::size_t nShown);

}  // namespace PredSelect
