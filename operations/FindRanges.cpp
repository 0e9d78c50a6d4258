#include "operations/FindRanges.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <numeric>
#include <utility>
#include <vector>

#include "common/MissingValue.h"
#include "common/Workers.h"
#include "host/cases/UACategories.h"
#include "host/data/DataTable.h"
#include "host/data/WholeTable.h"

namespace PredSelect {

namespace {

// What has been seen of one column.
class SeenColumn {
 public:
  explicit SeenColumn(const KOVA_Variable& variable) : fVariable(variable) {
    fRange.fDictionary = MCHost::DictionaryOf(variable);
    fRange.fbListed = variable.GetMeasurementLevel() != KOVA_Variable::kScale;
    if (fRange.fbListed) fpCategories = std::make_unique<UACategories>(variable, false);
  }

  void Look(const MCHost::ColumnView& cells, std::size_t n) {
    cells.fpNumbers != nullptr ? LookAtNumbers(cells.fpNumbers, n) : LookAtTexts(cells.fpCodes, n);
    if (fpCategories == nullptr) return;
    fCodes.resize(n);
    fpCategories->Encode(cells, n, fCodes.data());
    if (static_cast<std::size_t>(fpCategories->Size()) <= ColumnRange::kMostCategories) return;
    fpCategories.reset();
    fRange.fbListed = false;
  }

  ColumnRange Take(std::int64_t part) {
    const int n = fpCategories == nullptr ? 0 : fpCategories->Size();
    for (int code = 0; code < n; ++code) {
      const KOVA_Value& value = fpCategories->Decode(code);
      if (value.IsNumeric()) {
        fRange.fNumbers.push_back(value.GetNumber());
      } else {
        fRange.fTexts.push_back(value.GetString());
      }
      fRange.fFirst.push_back((part << ColumnRange::kPartShift) + code);
    }
    return std::move(fRange);
  }

 private:
  void LookAtNumbers(const double* values, std::size_t n) {
    const KOVA_MissingValues& missing = fVariable.GetMissingValues();
    const bool hasMissing = !missing.IsEmpty();
    for (std::size_t i = 0; i < n; ++i) {
      const double value = values[i];
      if (MCMV::IsMissing(value)) continue;
      ++fRange.fNValues;
      fRange.fAll.Add(value, value);
      if (!hasMissing || !missing.Contains(value)) fRange.fValid.Add(value, value);
    }
  }

  void LookAtTexts(const std::int32_t* codes, std::size_t n) {
    fRange.fNValues += n - std::count(codes, codes + n, -1);
  }

  const KOVA_Variable& fVariable;
  ColumnRange fRange;
  std::unique_ptr<UACategories> fpCategories;  // null where none are listed
  std::vector<double> fCodes;
};

}  // namespace

TableRanges FindRanges(MCHost::DataTable& table, std::int64_t part,
                       const Surroundings& surroundings) {
  std::vector<int> columns(static_cast<std::size_t>(table.ColumnCount()));
  std::iota(columns.begin(), columns.end(), 0);
  std::vector<SeenColumn> seen;
  for (const int column : columns) seen.emplace_back(table.GetVariable(column));
  MCCommon::Workers workers(surroundings.fThreads);
  std::int64_t cases = 0;
  const std::unique_ptr<MCHost::ITableScan> scan = table.Scan(columns);
  while (const MCHost::TableBatch* batch = scan->Next()) {
    if (surroundings.IsCancelled()) throw Cancelled();
    cases += static_cast<std::int64_t>(batch->fNCases);
    workers.For(batch->fNCases * seen.size()).ForEach(seen.size(), [&](std::size_t j, std::size_t) {
      seen[j].Look(batch->fColumns[j], batch->fNCases);
    });
  }
  TableRanges ranges;
  const int weight = table.GetWeightVarIndex();
  if (weight >= 0) ranges.fWeight = table.GetVariable(weight).GetName();
  for (SeenColumn& column : seen) ranges.fColumns.push_back(column.Take(part));
  ranges.fParts.push_back({part, cases});
  return ranges;
}

}  // namespace PredSelect
