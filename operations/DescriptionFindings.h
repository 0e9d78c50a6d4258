// The findings of a description: what each variable holds.
#pragma once

#include <string>
#include <vector>

namespace PredSelect {

class ColumnSummary;
class MissingPatterns;

// As JSON text: docs/report.md. REQUIRES: the summaries are finished.
std::string DescriptionFindings(const std::vector<ColumnSummary>& summaries,
                                const MissingPatterns& patterns, double nCases);

}  // namespace PredSelect
