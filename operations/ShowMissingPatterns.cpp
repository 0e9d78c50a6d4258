#include "operations/ShowMissingPatterns.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <utility>

#include "host/data/KOVA_Variable.h"
#include "host/output/pivot/BpCategory.h"
#include "host/output/pivot/BpComposite.h"
#include "host/output/pivot/BpDimension.h"
#include "host/output/pivot/BpPivotTable.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/output/pivot/BpString.h"
#include "operations/CommandRun.h"
#include "operations/MissingPatterns.h"

namespace PredSelect {

namespace {

using MCHost::OutputFormat;
using MCHost::OutputText;
using Patterns = std::vector<MissingPatterns::Pattern>;

bool IsOfSeveral(const Patterns& patterns) {
  std::set<int> columns;
  for (const auto& pattern : patterns) {
    columns.insert(pattern.fColumns.begin(), pattern.fColumns.end());
    if (columns.size() > 1) return true;
  }
  return false;
}

OutputText Names(const std::vector<int>& columns,
                 const std::vector<const KOVA_Variable*>& variables) {
  if (columns.empty()) return BpString("nothing");
  BpComposite names("[%1:, ^1:]1");
  names.Sublist();
  for (const int column : columns) {
    names.AddLiteral(variables[static_cast<std::size_t>(column)]->GetName());
  }
  return names.EndSublist().Finish();
}

std::string CountText(std::int64_t count) {
  return MCHost::FormatNumber(static_cast<double>(count), OutputFormat::kCount);
}

// How many there are besides, and what is not known of those shown.
std::vector<OutputText> Remarks(const MissingPatterns& patterns, const Patterns& shown) {
  std::vector<OutputText> texts;
  if (patterns.IsExact() && shown.size() < patterns.Count()) {
    texts.push_back(BpComposite("The ^1 most frequent of ^2 patterns...")
                        .AddLiteral(std::to_string(shown.size()))
                        .AddLiteral(CountText(static_cast<std::int64_t>(patterns.Count())))
                        .Finish());
  } else if (!patterns.IsExact()) {
    std::int64_t most = 0;
    for (const auto& pattern : shown) most = std::max(most, pattern.fNMore);
    texts.push_back(
        BpComposite(most == 0 ? "More than ^1 patterns..." : "More than ^1 patterns, ^2 more...")
            .AddLiteral(CountText(MissingPatterns::kMostPatterns))
            .AddLiteral(CountText(most))
            .Finish());
  }
  return texts;
}

}  // namespace

void ShowMissingPatterns(const MissingPatterns& patterns,
                         const std::vector<const KOVA_Variable*>& variables, double nCases) {
  const Patterns shown = patterns.MostFrequent(kShownPatterns);
  if (!IsOfSeveral(shown)) return;
  BpPivotTable table("Values Missing Together", "MissingPatterns");
  table.Flat();
  BpDimension rows = table.RowDimension("Pattern");
  BpDimension columns = table.ColumnDimension("Properties");
  const BpCategory cases = columns.AddCategory(BpString("Cases"), BpProcedure::Count());
  const BpCategory percent = columns.AddCategory(BpString("Percent"), BpProcedure::Percent());
  const BpCategory size = columns.AddCategory(BpString("Variables"), BpProcedure::Count());
  const BpCategory names = columns.AddCategory(BpString("Missing Together"));
  for (std::size_t i = 0; i < shown.size(); ++i) {
    const BpCategory row = rows.AddCategory(OutputText::Literal(std::to_string(i + 1)));
    const auto nOf = static_cast<double>(shown[i].fNCases);
    table.SetCell({row, cases}, nOf);
    table.SetCell({row, percent}, 100.0 * nOf / nCases);
    table.SetCell({row, size}, static_cast<double>(shown[i].fColumns.size()));
    table.SetCell({row, names}, Names(shown[i].fColumns, variables));
  }
  std::vector<OutputText> remarks = Remarks(patterns, shown);
  if (!remarks.empty()) table.Caption(Paragraphs(std::move(remarks)));
  table.Show();
}

}  // namespace PredSelect
