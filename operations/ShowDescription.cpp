#include "operations/ShowDescription.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "common/MissingValue.h"
#include "host/data/MeasurementLevels.h"
#include "host/output/pivot/BpCategory.h"
#include "host/output/pivot/BpComposite.h"
#include "host/output/pivot/BpDimension.h"
#include "host/output/pivot/BpPivotTable.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/output/pivot/BpString.h"
#include "operations/ColumnSummary.h"
#include "operations/CommandRun.h"

namespace PredSelect {

namespace {

using MCHost::OutputFormat;
using MCHost::OutputText;

// More distinct texts than this are given as a number only.
constexpr std::size_t kShownCategories = 6;
constexpr std::size_t kMostFrequent = 10;
constexpr std::size_t kBins = 8;

enum class Kind { kScale, kTime, kCategories };

bool IsTime(const KOVA_Variable& variable) { return variable.GetTime() != KOVA_Variable::kNoTime; }

Kind KindOf(const ColumnSummary& summary) {
  const KOVA_Variable& variable = summary.Variable();
  if (variable.GetMeasurementLevel() != KOVA_Variable::kScale) return Kind::kCategories;
  return IsTime(variable) ? Kind::kTime : Kind::kScale;
}

const char* TypeOf(const KOVA_Variable& variable) {
  constexpr const char* kTimes[] = {"number", "date", "date and time", "time", "duration"};
  return variable.IsNumeric() ? kTimes[variable.GetTime()] : "text";
}

OutputText Reason(const ColumnSummary& summary) { return BpString(LevelReason(summary)); }

OutputText Counts(const std::vector<double>& counts) {
  BpComposite list("[%1:, ^1:]1");
  list.Sublist();
  for (const double count : counts) {
    list.AddLiteral(MCHost::FormatNumber(count, OutputFormat::kCount));
  }
  return list.EndSublist().Finish();
}

// "a, b, c" of few texts, in ascending order.
OutputText AllValues(const ColumnSummary& summary) {
  if (summary.Variable().IsNumeric()) return OutputText::Literal("");
  if (summary.Distinct() > static_cast<double>(kShownCategories)) {
    return OutputText::Literal("more than " + std::to_string(kShownCategories));
  }
  std::vector<std::string> values;
  for (auto& category : summary.MostFrequent(kShownCategories)) values.push_back(category.fValue);
  std::sort(values.begin(), values.end());
  std::string text;
  for (const std::string& value : values) text += (text.empty() ? "" : ", ") + value;
  return OutputText::Literal(text);
}

double Percent(double part, double whole) { return whole > 0.0 ? 100.0 * part / whole : 0.0; }

std::string WholePercent(double percent) {
  return percent > 0.0 && percent < 0.5 ? "<1%" : std::to_string(std::lround(percent)) + "%";
}

// "Adelie 44%, Gentoo 36%"; as many as a line may have room for.
OutputText Shares(const ColumnSummary& summary) {
  const bool isAllDistinct = summary.Distinct() == summary.Valid() && summary.Valid() > 1.0;
  if (isAllDistinct) return BpString("each value once");
  const std::vector<ColumnSummary::Category> categories = summary.MostFrequent(kShownCategories);
  const std::vector<std::string> names = ColumnSummary::NamesOf(categories);
  std::string text;
  for (std::size_t i = 0; i < categories.size(); ++i) {
    text += (text.empty() ? "" : ", ") + names[i] + " " +
            WholePercent(Percent(categories[i].fCases, summary.Valid()));
  }
  return OutputText::Literal(text);
}

// Nothing for a cell that is empty.
using Cell = std::optional<OutputText>;

// A table of one kind: a column is a heading, a format, and what it takes from a summary.
class DescribedTable {
 public:
  DescribedTable(const char* title, const char* subtype)
      : fTable(title, subtype),
        fRows(fTable.RowDimension("Variable")),
        fColumns(fTable.ColumnDimension("Properties")) {}

  BpPivotTable& Table() { return fTable; }

  void AddNumber(const char* key, OutputFormat format,
                 std::function<double(const ColumnSummary&)> value) {
    const BpCategory column = fColumns.AddCategory(BpString(key), format);
    fSetters.push_back([this, column, value = std::move(value)](auto row, const auto& summary) {
      const double number = value(summary);
      if (!MCMV::IsMissing(number)) fTable.SetCell({row, column}, number);
    });
  }

  void AddText(const char* key, std::function<Cell(const ColumnSummary&)> value,
               OutputFormat format = OutputFormat::kText) {
    const BpCategory column = fColumns.AddCategory(BpString(key), format);
    fSetters.push_back([this, column, value = std::move(value)](auto row, const auto& summary) {
      Cell text = value(summary);
      if (text) fTable.SetCell({row, column}, *std::move(text));
    });
  }

  // So many rows, at most, with all columns that have been added.
  void Expect(std::size_t rows) { fTable.Reserve(rows * fSetters.size()); }

  void AddRow(const ColumnSummary& summary) {
    const BpCategory row = fRows.AddCategory(OutputText::Literal(summary.Variable().GetName()));
    for (const auto& set : fSetters) set(row, summary);
  }

 private:
  BpPivotTable fTable;
  BpDimension fRows;
  BpDimension fColumns;
  std::vector<std::function<void(const BpCategory&, const ColumnSummary&)>> fSetters;
};

double MissingPercent(const ColumnSummary& summary) {
  const double missing = summary.Missing() + summary.UserMissing();
  return Percent(missing, summary.Valid() + missing);
}

auto QuantileAt(double share) {
  return [share](const ColumnSummary& summary) { return summary.Quantile(share); };
}

// Of dates and times alone.
std::function<Cell(const ColumnSummary&)> TimeText(
    std::function<double(const ColumnSummary&)> value) {
  return [value = std::move(value)](const ColumnSummary& summary) {
    const std::string text = summary.ValueText(value(summary));
    return IsTime(summary.Variable()) && !text.empty() ? Cell(OutputText::Literal(text)) : Cell();
  };
}

void AddHistogram(DescribedTable& table) {
  table.AddText(
      "Histogram",
      [](const ColumnSummary& summary) {
        const std::vector<double> counts = summary.Histogram(kBins);
        return counts.empty() ? Cell() : Cell(Counts(counts));
      },
      OutputFormat::kHistogram);
}

void ShowDictionary(const std::vector<ColumnSummary>& summaries) {
  DescribedTable table("Dictionary", "Dictionary");
  table.Table().ForPrograms();
  table.AddText("Type", [](const auto& of) { return OutputText::Literal(TypeOf(of.Variable())); });
  table.AddText("Level", [](const auto& of) {
    return OutputText::Literal(MCHost::MeasurementLevelName(of.Variable().GetMeasurementLevel()));
  });
  table.AddNumber("Valid", BpProcedure::Count(), &ColumnSummary::Valid);
  table.AddNumber("Missing", BpProcedure::Count(), &ColumnSummary::Missing);
  table.AddNumber("User-missing", BpProcedure::Count(), &ColumnSummary::UserMissing);
  table.AddNumber("Minimum", BpProcedure::Coefficient(), &ColumnSummary::Minimum);
  table.AddNumber("Maximum", BpProcedure::Coefficient(), &ColumnSummary::Maximum);
  table.AddText("Values", AllValues);
  table.AddText("Label",
                [](const auto& of) { return OutputText::Literal(of.Variable().GetLabel()); });
  table.AddText("Level Because", Reason);
  table.AddNumber("Distinct", BpProcedure::Count(), &ColumnSummary::Distinct);
  table.AddText("Distinct Values Are", [](const auto& of) {
    return BpString(of.IsDistinctExact() ? "counted" : "estimated");
  });
  table.AddNumber("Mean", BpProcedure::Coefficient(), &ColumnSummary::Mean);
  table.AddNumber("Standard Deviation", BpProcedure::Coefficient(), &ColumnSummary::Deviation);
  table.AddNumber("Lower Quartile", BpProcedure::Coefficient(), QuantileAt(0.25));
  table.AddNumber("Median", BpProcedure::Coefficient(), QuantileAt(0.5));
  table.AddNumber("Upper Quartile", BpProcedure::Coefficient(), QuantileAt(0.75));
  table.AddText("Earliest", TimeText(&ColumnSummary::Minimum));
  table.AddText("Latest", TimeText(&ColumnSummary::Maximum));
  AddHistogram(table);
  table.Expect(summaries.size());
  for (const ColumnSummary& summary : summaries) table.AddRow(summary);
  table.Table().Show();
}

void ShowMostFrequent(const std::vector<ColumnSummary>& summaries) {
  BpPivotTable table("Most Frequent Values", "MostFrequent");
  table.ForPrograms();
  BpDimension variables = table.RowDimension("Variable");
  BpDimension values = table.RowDimension("Value");
  BpDimension columns = table.ColumnDimension("Statistics");
  const BpCategory label = columns.AddCategory(BpString("Label"));
  const BpCategory cases = columns.AddCategory(BpString("Cases"), BpProcedure::Count());
  const BpCategory percent = columns.AddCategory(BpString("Percent"), BpProcedure::Percent());
  for (const ColumnSummary& summary : summaries) {
    if (KindOf(summary) != Kind::kCategories) continue;
    const BpCategory variable =
        variables.AddCategory(OutputText::Literal(summary.Variable().GetName()));
    for (const auto& category : summary.MostFrequent(kMostFrequent)) {
      const BpCategory value = values.AddCategory(OutputText::Literal(category.fValue));
      if (!category.fLabel.empty()) {
        table.SetCell({variable, value, label}, OutputText::Literal(category.fLabel));
      }
      table.SetCell({variable, value, cases}, category.fCases);
      table.SetCell({variable, value, percent}, Percent(category.fCases, summary.Valid()));
    }
  }
  table.Show();
}

void AddScaleColumns(DescribedTable& table) {
  table.AddNumber("Missing", BpProcedure::Percent(), MissingPercent);
  AddHistogram(table);
  table.AddNumber("Mean", OutputFormat::kBrief, &ColumnSummary::Mean);
  table.AddNumber("SD", OutputFormat::kBrief, &ColumnSummary::Deviation);
  table.AddNumber("Min", OutputFormat::kBrief, &ColumnSummary::Minimum);
  table.AddNumber("Median", OutputFormat::kBrief, QuantileAt(0.5));
  table.AddNumber("Max", OutputFormat::kBrief, &ColumnSummary::Maximum);
  table.AddNumber("25%", OutputFormat::kBrief, QuantileAt(0.25));
  table.AddNumber("75%", OutputFormat::kBrief, QuantileAt(0.75));
}

void AddTimeColumns(DescribedTable& table) {
  table.AddNumber("Missing", BpProcedure::Percent(), MissingPercent);
  AddHistogram(table);
  table.AddText("Earliest", TimeText(&ColumnSummary::Minimum));
  table.AddText("Latest", TimeText(&ColumnSummary::Maximum));
  table.AddText("Median", TimeText(QuantileAt(0.5)));
}

void AddCategoryColumns(DescribedTable& table) {
  table.AddNumber("Missing", BpProcedure::Percent(), MissingPercent);
  table.AddNumber("Distinct", BpProcedure::Count(), &ColumnSummary::Distinct);
  table.AddText("Level", [](const ColumnSummary& of) {
    return BpComposite("^1: ^2")
        .AddLiteral(MCHost::MeasurementLevelName(of.Variable().GetMeasurementLevel()))
        .Add(Reason(of))
        .Finish();
  });
  table.AddText("Most Frequent", Shares);
}

// Where any of these variables has one.
void AddLabels(const std::vector<const ColumnSummary*>& shown, DescribedTable& table) {
  const auto hasNone = [](const ColumnSummary* of) { return of->Variable().GetLabel().empty(); };
  if (std::ranges::all_of(shown, hasNone)) return;
  table.AddText("Label",
                [](const auto& of) { return OutputText::Literal(of.Variable().GetLabel()); });
}

// The names of the summaries that a test holds of, in a text; nothing for none.
template <class Test>
void AddNames(const char* key, const std::vector<const ColumnSummary*>& shown, Test test,
              std::vector<OutputText>& texts) {
  BpComposite text(key);
  text.Sublist();
  bool hasAny = false;
  for (const ColumnSummary* summary : shown) {
    if (!test(*summary)) continue;
    text.AddLiteral(summary->Variable().GetName());
    hasAny = true;
  }
  if (hasAny) texts.push_back(text.EndSublist().Finish());
}

// What a page says below the lines of one kind.
std::vector<OutputText> Remarks(Kind kind, const std::vector<const ColumnSummary*>& shown) {
  std::vector<OutputText> texts;
  AddNames(
      "Distinct values are estimated: ^1...", shown,
      [kind](const auto& of) { return kind == Kind::kCategories && !of.IsDistinctExact(); }, texts);
  AddNames(
      "Quantiles are estimated: ^1...", shown,
      [kind](const auto& of) { return kind != Kind::kCategories && !of.IsDistinctExact(); }, texts);
  AddNames(
      "Whole numbers on a scale: ^1...", shown,
      [kind](const auto& of) {
        return kind == Kind::kScale && of.Variable().IsLevelSettled() && of.IsWhole();
      },
      texts);
  return texts;
}

struct KindTable {
  Kind fKind;
  const char* fTitle;
  const char* fSubtype;
  void (*fAddColumns)(DescribedTable& table);
};

constexpr KindTable kKinds[] = {
    {Kind::kScale, "Numbers", "ScaleVariables", AddScaleColumns},
    {Kind::kTime, "Dates and Times", "TimeVariables", AddTimeColumns},
    {Kind::kCategories, "Categories", "CategoricalVariables", AddCategoryColumns}};

OutputText Size(double nCases, std::size_t nVariables, std::size_t nShown) {
  BpComposite text(nShown < nVariables ? "^1 cases, ^2 variables, ^3 more not shown..."
                                       : "^1 cases, ^2 variables...");
  text.AddLiteral(MCHost::FormatNumber(nCases, OutputFormat::kCount));
  text.AddLiteral(std::to_string(nVariables));
  return text.AddLiteral(std::to_string(nVariables - nShown)).Finish();
}

}  // namespace

const char* LevelReason(const ColumnSummary& summary) {
  const KOVA_Variable& variable = summary.Variable();
  if (!variable.IsLevelSettled()) return "given";
  if (!variable.IsNumeric()) return "text";
  if (summary.Valid() == 0.0) return "empty";
  return summary.IsWhole() ? "integers" : "fractions";
}

void ShowForPrograms(const std::vector<ColumnSummary>& summaries) {
  ShowDictionary(summaries);
  ShowMostFrequent(summaries);
}

void ShowDescription(const std::vector<ColumnSummary>& summaries, double nCases,
                     std::size_t nShown) {
  nShown = std::min(nShown, summaries.size());
  const auto isOf = [&](Kind kind) {
    return [kind](const ColumnSummary& summary) { return KindOf(summary) == kind; };
  };
  const auto shownEnd = summaries.begin() + static_cast<std::ptrdiff_t>(nShown);
  const KindTable* last = nullptr;
  for (const KindTable& kind : kKinds) {
    if (std::any_of(summaries.begin(), shownEnd, isOf(kind.fKind))) last = &kind;
  }
  for (const KindTable& kind : kKinds) {
    if (std::none_of(summaries.begin(), shownEnd, isOf(kind.fKind))) continue;
    std::vector<const ColumnSummary*> shown;
    for (auto summary = summaries.begin(); summary != shownEnd; ++summary) {
      if (KindOf(*summary) == kind.fKind) shown.push_back(&*summary);
    }
    DescribedTable table(kind.fTitle, kind.fSubtype);
    table.Table().Flat();
    kind.fAddColumns(table);
    AddLabels(shown, table);
    table.Expect(shown.size());
    for (const ColumnSummary* summary : shown) table.AddRow(*summary);
    std::vector<OutputText> below = Remarks(kind.fKind, shown);
    if (&kind == last) below.push_back(Size(nCases, summaries.size(), nShown));
    if (!below.empty()) table.Table().Caption(Paragraphs(std::move(below)));
    table.Table().Show();
  }
}

}  // namespace PredSelect
