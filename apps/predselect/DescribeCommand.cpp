#include "apps/predselect/DescribeCommand.h"

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "apps/predselect/ExitCode.h"
#include "apps/predselect/LiveOutput.h"
#include "apps/predselect/OpenTable.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/Terminal.h"
#include "common/MissingValue.h"
#include "host/data/DataTable.h"
#include "host/output/pivot/BpCategory.h"
#include "host/output/pivot/BpDimension.h"
#include "host/output/pivot/BpPivotTable.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/output/pivot/BpString.h"
#include "host/session/Session.h"
#include "host/session/SessionScope.h"

namespace PredSelectApp {

namespace {

using MCHost::ColumnView;
using MCHost::DataTable;
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

std::vector<Summary> Summarize(DataTable& table) {
  std::vector<Summary> summaries;
  std::vector<int> columns;
  for (int i = 0; i < table.ColumnCount(); ++i) {
    summaries.emplace_back(table.GetVariable(i));
    columns.push_back(i);
  }
  const std::unique_ptr<MCHost::ITableScan> scan = table.Scan(columns);
  while (const MCHost::TableBatch* batch = scan->Next()) {
    for (std::size_t j = 0; j < summaries.size(); ++j) {
      summaries[j].Observe(batch->fColumns[j], batch->fNCases);
    }
  }
  return summaries;
}

std::string CategoriesOf(const Summary& summary) {
  if (summary.fStrings.size() > kShownCategories) {
    return "more than " + std::to_string(kShownCategories);
  }
  std::string text;
  for (const std::string& value : summary.fStrings) text += (text.empty() ? "" : ", ") + value;
  return text;
}

std::string LevelName(const KOVA_Variable& variable) {
  switch (variable.GetMeasurementLevel()) {
    case KOVA_Variable::kNominal:
      return "nominal";
    case KOVA_Variable::kOrdinal:
      return "ordinal";
    default:
      return "scale";
  }
}

void ShowDictionary(DataTable& table) {
  const std::vector<Summary> summaries = Summarize(table);
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
    dictionary.SetCell({row, level}, OutputText::Literal(LevelName(variable)));
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

int DescribeData(const Options& options) {
  const std::unique_ptr<DataTable> table = OpenTable(options.fData);
  ProgressLine progress(false);
  LiveOutput document(options.fResult, progress);
  document.SetData(options.fData.fFile, *table);
  MCHost::Session session(*table, document);
  const MCHost::SessionScope scope(session);
  document.BeginRun("describe").fbCompleted = true;
  ShowDictionary(*table);
  WriteDocument(document, options.fResult);
  return kCompleted;
}

}  // namespace PredSelectApp
