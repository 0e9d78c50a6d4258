#include "host/data/MeasurementLevels.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "common/MissingValue.h"
#include "host/data/ITable.h"

namespace MCHost {

namespace {

// What has been seen of one numeric variable.
class Evidence {
 public:
  explicit Evidence(KOVA_Variable& variable) : fpVariable(&variable) {}

  bool IsScale() const { return fbScale; }
  void Observe(const double* values, std::size_t n) {
    for (std::size_t i = 0; i < n && !fbScale; ++i) Observe(values[i]);
  }
  void Settle() {
    fpVariable->SetMeasurementLevel(fbScale ? KOVA_Variable::kScale : KOVA_Variable::kNominal);
  }

 private:
  void Observe(double value) {
    if (MCMV::IsMissing(value)) return;
    if (std::find(fDistinct.begin(), fDistinct.end(), value) != fDistinct.end()) return;
    if (fpVariable->GetMissingValues().Contains(value)) return;
    fDistinct.push_back(value);
    fbScale = value != std::floor(value) || fDistinct.size() >= kScaleDistinctValues;
  }

  KOVA_Variable* fpVariable;
  std::vector<double> fDistinct;
  bool fbScale = false;
};

void Observe(ITable& table, const std::vector<int>& columns, std::vector<Evidence>& evidence) {
  const std::unique_ptr<ITableScan> scan = table.Scan(columns);
  const auto isScale = [](const Evidence& one) { return one.IsScale(); };
  while (!std::all_of(evidence.begin(), evidence.end(), isScale)) {
    const TableBatch* batch = scan->Next();
    if (batch == nullptr) return;
    for (std::size_t j = 0; j < evidence.size(); ++j) {
      evidence[j].Observe(batch->fColumns[j].fpNumbers, batch->fNCases);
    }
  }
}

}  // namespace

void SettleMeasurementLevels(ITable& table) {
  std::vector<int> columns;
  std::vector<Evidence> evidence;
  for (int i = 0; i < table.ColumnCount(); ++i) {
    KOVA_Variable& variable = table.GetVariable(i);
    if (variable.GetMeasurementLevel() != KOVA_Variable::kUnknown) continue;
    if (!variable.IsNumeric()) {
      variable.SetMeasurementLevel(KOVA_Variable::kNominal);
      continue;
    }
    columns.push_back(i);
    evidence.emplace_back(variable);
  }
  if (columns.empty()) return;
  Observe(table, columns, evidence);
  for (Evidence& one : evidence) one.Settle();
}

}  // namespace MCHost
