#include "host/data/MeasurementLevels.h"

#include <algorithm>
#include <bitset>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "common/MissingValue.h"
#include "common/parts/ColumnRange.h"
#include "host/data/ITable.h"

namespace MCHost {

namespace {

constexpr std::int64_t kFirstLook = 1024;

// By code.
constexpr const char* kLevelNames[] = {"unknown", "nominal", "ordinal", "scale"};

// What has been seen of one numeric variable.
class Evidence {
 public:
  explicit Evidence(KOVA_Variable& variable) : fpVariable(&variable) {}

  bool IsScale() const { return fbScale; }
  void Observe(const double* values, std::size_t n) {
    for (std::size_t i = 0; i < n && !fbScale; ++i) Observe(values[i]);
  }
  void Settle() {
    fpVariable->SettleMeasurementLevel(fbScale ? KOVA_Variable::kScale : KOVA_Variable::kNominal);
  }

 private:
  // A value met before says nothing new. Most are small whole numbers, found by their bit.
  void Observe(double value) {
    const bool isSmall = value >= 0 && value < kSmallNumbers;
    const int whole = isSmall ? static_cast<int>(value) : 0;
    const bool hasBit = isSmall && value == whole;
    if (hasBit && fMetNumbers[static_cast<std::size_t>(whole)]) return;
    if (hasBit) fMetNumbers.set(static_cast<std::size_t>(whole));
    if (MCMV::IsMissing(value)) return;
    if (std::find(fDistinct.begin(), fDistinct.end(), value) != fDistinct.end()) return;
    if (fpVariable->GetMissingValues().Contains(value)) return;
    fDistinct.push_back(value);
    fbScale = value != std::floor(value) || fDistinct.size() >= ColumnRange::kScaleDistinctValues;
  }

  static constexpr int kSmallNumbers = 64;

  KOVA_Variable* fpVariable;
  std::vector<double> fDistinct;
  std::bitset<kSmallNumbers> fMetNumbers;
  bool fbScale = false;
};

using Question = std::pair<int, Evidence>;  // a column and what has been seen of it

// Shows the evidence the first cases of its columns, at most `maxCases` of them.
void Observe(ITable& table, std::vector<Question>& open, std::int64_t maxCases) {
  std::vector<int> columns;
  columns.reserve(open.size());
  for (const Question& one : open) columns.push_back(one.first);
  const std::unique_ptr<ITableScan> scan = table.Scan(columns);
  const auto isScale = [](const Question& one) { return one.second.IsScale(); };
  const TableBatch* batch = nullptr;
  do {
    batch = scan->Next();
    if (batch == nullptr || batch->fFirstCase >= maxCases) return;
    for (std::size_t j = 0; j < open.size(); ++j) {
      open[j].second.Observe(batch->fColumns[j].fpNumbers, batch->fNCases);
    }
  } while (!std::all_of(open.begin(), open.end(), isScale));
}

// Settles the columns that are known to be scale and keeps the others.
void DropScale(std::vector<Question>& open) {
  std::erase_if(open, [](Question& one) {
    if (one.second.IsScale()) one.second.Settle();
    return one.second.IsScale();
  });
}

}  // namespace

const char* MeasurementLevelName(KOVA_Variable::MeasurementLevel level) {
  return kLevelNames[level];
}

KOVA_Variable::MeasurementLevel FindMeasurementLevel(const std::string& name) {
  const auto* found = std::find(std::begin(kLevelNames), std::end(kLevelNames), name);
  return found == std::end(kLevelNames)
             ? KOVA_Variable::kUnknown
             : static_cast<KOVA_Variable::MeasurementLevel>(found - std::begin(kLevelNames));
}

void SettleMeasurementLevels(ITable& table) {
  std::vector<Question> open;
  for (int i = 0; i < table.ColumnCount(); ++i) {
    KOVA_Variable& variable = table.GetVariable(i);
    if (variable.GetMeasurementLevel() != KOVA_Variable::kUnknown) continue;
    if (variable.IsNumeric()) {
      open.emplace_back(i, Evidence(variable));
    } else {
      variable.SettleMeasurementLevel(KOVA_Variable::kNominal);
    }
  }
  // Most scale variables show it in a few cases; only the others are read to the end.
  for (const std::int64_t maxCases : {kFirstLook, std::numeric_limits<std::int64_t>::max()}) {
    if (open.empty()) return;
    Observe(table, open, maxCases);
    DropScale(open);
  }
  for (Question& one : open) one.second.Settle();
}

}  // namespace MCHost
