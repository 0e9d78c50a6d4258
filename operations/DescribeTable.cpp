#include "operations/DescribeTable.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "common/MissingValue.h"
#include "host/data/ITable.h"
#include "host/data/MeasurementLevels.h"
#include "host/output/OutputDocument.h"
#include "host/output/pivot/BpCategory.h"
#include "host/output/pivot/BpDimension.h"
#include "host/output/pivot/BpPivotTable.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/output/pivot/BpString.h"
#include "host/session/Session.h"
#include "host/session/SessionScope.h"
#include "operations/DocumentParts.h"

namespace PredSelect {

namespace {

using MCHost::ColumnView;
using MCHost::ITable;
using MCHost::OutputText;

// More distinct values than this are given as a number only.
constexpr std::size_t kShownCategories = 6;

// What the cells of one variable hold. User-missing values are counted, not looked into.
class Summary {
 public:
  explicit Summary(const KOVA_Variable& variable) : fVariable(variable) {}

  void Observe(const ColumnView& column, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
      if (column.fpNumbers != nullptr) {
        ObserveNumber(column.fpNumbers[i]);
      } else {
        ObserveString(column, column.fpCodes[i]);
      }
    }
  }

  double fNValid = 0.0;
  double fNMissing = 0.0;
  double fNUserMissing = 0.0;
  double fMinimum = MCMV::gMissingValue;
  double fMaximum = MCMV::gMissingValue;
  std::set<std::string> fStrings;

 private:
  void ObserveNumber(double value) {
    if (MCMV::IsMissing(value)) {
      ++fNMissing;
    } else if (fVariable.GetMissingValues().Contains(value)) {
      ++fNUserMissing;
    } else {
      fMinimum = fNValid == 0.0 ? value : std::min(fMinimum, value);
      fMaximum = fNValid == 0.0 ? value : std::max(fMaximum, value);
      ++fNValid;
    }
  }

  void ObserveString(const ColumnView& column, std::int32_t code) {
    if (code < 0) {
      ++fNMissing;
      return;
    }
    const std::string& value = column.fpDictionary->At(code);
    if (fVariable.GetMissingValues().Contains(value)) {
      ++fNUserMissing;
      return;
    }
    ++fNValid;
    if (fStrings.size() <= kShownCategories) fStrings.insert(value);
  }

  const KOVA_Variable& fVariable;
};

// What one pass over the table has seen.
struct Pass {
  std::vector<Summary> fSummaries;
  std::int64_t fNCases = 0;
  bool fbWhole = true;  // false when the user stopped it
};

Pass Summarize(ITable& table, const Surroundings& surroundings) {
  Pass pass;
  std::vector<int> columns;
  for (int i = 0; i < table.ColumnCount(); ++i) {
    pass.fSummaries.emplace_back(table.GetVariable(i));
    columns.push_back(i);
  }
  const std::unique_ptr<MCHost::ITableScan> scan = table.Scan(columns);
  while (const MCHost::TableBatch* batch = scan->Next()) {
    pass.fbWhole = !surroundings.IsCancelled();
    if (!pass.fbWhole) break;
    for (std::size_t j = 0; j < columns.size(); ++j) {
      pass.fSummaries[j].Observe(batch->fColumns[j], batch->fNCases);
    }
    pass.fNCases += static_cast<std::int64_t>(batch->fNCases);
  }
  return pass;
}

std::string CategoriesOf(const Summary& summary) {
  if (summary.fStrings.size() > kShownCategories) {
    return "more than " + std::to_string(kShownCategories);
  }
  std::string text;
  for (const std::string& value : summary.fStrings) text += (text.empty() ? "" : ", ") + value;
  return text;
}

void ShowDictionary(const ITable& table, const std::vector<Summary>& summaries) {
  BpPivotTable dictionary("Dictionary", "Dictionary");
  BpDimension rows = dictionary.RowDimension("Variable");
  BpDimension columns = dictionary.ColumnDimension("Properties");
  const auto column = [&columns](const char* key, MCHost::OutputFormat format) {
    return columns.AddCategory(BpString(key), format);
  };
  const BpCategory type = column("Type", MCHost::OutputFormat::kText);
  const BpCategory level = column("Level", MCHost::OutputFormat::kText);
  const BpCategory valid = column("Valid", BpProcedure::Count());
  const BpCategory missing = column("Missing", BpProcedure::Count());
  const BpCategory userMissing = column("User-missing", BpProcedure::Count());
  const BpCategory minimum = column("Minimum", BpProcedure::Coefficient());
  const BpCategory maximum = column("Maximum", BpProcedure::Coefficient());
  const BpCategory categories = column("Values", MCHost::OutputFormat::kText);
  const BpCategory label = column("Label", MCHost::OutputFormat::kText);
  for (std::size_t j = 0; j < summaries.size(); ++j) {
    const Summary& summary = summaries[j];
    const KOVA_Variable& variable = table.GetVariable(static_cast<int>(j));
    const BpCategory row = rows.AddCategory(OutputText::Literal(variable.GetName()));
    dictionary.SetCell({row, type}, OutputText::Literal(variable.IsNumeric() ? "number" : "text"));
    const char* levelName = MCHost::MeasurementLevelName(variable.GetMeasurementLevel());
    dictionary.SetCell({row, level}, OutputText::Literal(levelName));
    dictionary.SetCell({row, valid}, summary.fNValid);
    dictionary.SetCell({row, missing}, summary.fNMissing);
    dictionary.SetCell({row, userMissing}, summary.fNUserMissing);
    if (!MCMV::IsMissing(summary.fMinimum)) {
      dictionary.SetCell({row, minimum}, summary.fMinimum);
      dictionary.SetCell({row, maximum}, summary.fMaximum);
    }
    dictionary.SetCell({row, categories}, OutputText::Literal(CategoriesOf(summary)));
    dictionary.SetCell({row, label}, OutputText::Literal(variable.GetLabel()));
  }
  dictionary.Show();
}

}  // namespace

Outcome DescribeTable(MCHost::ITable& table, MCHost::OutputDocument& document,
                      const Surroundings& surroundings) {
  MCHost::Session session(table, document);
  const MCHost::SessionScope scope(session);
  MCHost::OutputRun& run = document.BeginRun("describe");
  const Pass pass = Summarize(table, surroundings);
  RecordData(document, pass.fNCases, table.ColumnCount());
  if (!pass.fbWhole) return Outcome::kCancelled;
  ShowDictionary(table, pass.fSummaries);
  run.fbCompleted = true;
  return Outcome::kCompleted;
}

}  // namespace PredSelect
