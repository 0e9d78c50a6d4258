#include "host/data/TableBatches.h"

#include <utility>

namespace MCHost {

namespace {

void AddCells(const ColumnView& column, std::size_t n, ArrowCells& cells) {
  if (cells.IsNumeric()) return cells.AddNumbers(column.fpNumbers, n);
  for (std::size_t i = 0; i < n; ++i) {
    const std::int32_t code = column.fpCodes[i];
    if (code < 0) {
      cells.AddMissing();
    } else {
      cells.AddText(column.fpDictionary->At(code));
    }
  }
}

}  // namespace

TableBatches::TableBatches(std::shared_ptr<ITable> table, const std::vector<int>& columns)
    : fpTable(std::move(table)), fpScan(fpTable->Scan(columns)) {
  for (const int column : columns) {
    const KOVA_Variable& variable = fpTable->GetVariable(column);
    ArrowMetadata metadata;
    if (!variable.GetLabel().empty()) metadata.emplace_back("label", variable.GetLabel());
    fFields.push_back({variable.GetName(), variable.IsNumeric(), std::move(metadata)});
  }
}

std::size_t TableBatches::Next(std::vector<ArrowCells>& columns) {
  const TableBatch* batch = fpScan->Next();
  if (batch == nullptr) return 0;
  for (std::size_t j = 0; j < columns.size(); ++j) {
    AddCells(batch->fColumns[j], batch->fNCases, columns[j]);
  }
  return batch->fNCases;
}

}  // namespace MCHost
