#include "host/data/DataTable.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "common/MCAssert.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

constexpr char kSource[] = "host/data/DataTable";

}  // namespace

class DataTable::ViewScan : public ITableScan {
 public:
  ViewScan(const DataTable& table, std::vector<int> columns, std::size_t maxCases)
      : fpTable(&table),
        fColumns(std::move(columns)),
        fBatchCases(std::min(table.BatchCases(fColumns.size()), maxCases)) {
    fBatch.fColumns.resize(fColumns.size());
    fBuffers.resize(fColumns.size());
  }

  const TableBatch* Next() override {
    if (fBatch.fNCases > 0) fpTable->LeaveBatch(fBatch);
    fBatch.fFirstCase += static_cast<std::int64_t>(fBatch.fNCases);
    const std::int64_t left = fpTable->CaseCount() - fBatch.fFirstCase;
    if (left <= 0) return nullptr;
    fBatch.fNCases = std::min(fBatchCases, static_cast<std::size_t>(left));
    for (std::size_t j = 0; j < fColumns.size(); ++j) {
      fBatch.fColumns[j] =
          fpTable->View(fColumns[j], fBatch.fFirstCase, fBatch.fNCases, fBuffers[j]);
    }
    return &fBatch;
  }

 private:
  const DataTable* fpTable;
  std::vector<int> fColumns;
  std::size_t fBatchCases;
  std::vector<ViewBuffer> fBuffers;
  TableBatch fBatch;
};

std::vector<std::string> DataTable::Notes() const {
  std::vector<std::string> notes = fSourceNotes;
  for (std::string& note : ColumnNotes()) notes.push_back(std::move(note));
  return notes;
}

std::vector<std::string> DataTable::ColumnNotes() const {
  std::vector<std::string> notes;
  for (const Column& column : fColumns) {
    if (column.fNote.empty()) continue;
    notes.push_back("Column \"" + column.fVariable.GetName() + "\" " + column.fNote + ".");
  }
  return notes;
}

std::size_t DataTable::KeptBytes() const {
  std::size_t bytes = 0;
  for (const Column& column : fColumns) {
    bytes += column.fNumbers.PackedBytes() + column.fCodes.PackedBytes();
  }
  return bytes;
}

void DataTable::TakeAsEmpty(int column, KOVA_Variable variable) {
  At(column).fVariable = std::move(variable);
  At(column).fbEmpty = true;
}

int DataTable::AddVariable(KOVA_Variable variable) {
  fColumns.emplace_back(std::move(variable));
  return ColumnCount() - 1;
}

void DataTable::WriteNumbers(int column, std::int64_t firstCase, const double* values,
                             std::size_t n) {
  MCCommon::Assert(column >= fNOwnColumns && At(column).fVariable.IsNumeric(),
                   "numbers go to a numeric variable that was added", kSource);
  At(column).fNumbers.Write(firstCase, values, n);
}

void DataTable::WriteStrings(int column, std::int64_t firstCase, const std::string* const* values,
                             std::size_t n) {
  MCCommon::Assert(column >= fNOwnColumns && !At(column).fVariable.IsNumeric(),
                   "strings go to a string variable that was added", kSource);
  Column& target = At(column);
  for (std::size_t i = 0; i < n; ++i) {
    const std::int32_t code = values[i] != nullptr ? target.fStrings.Code(*values[i]) : -1;
    target.fCodes.Write(firstCase + static_cast<std::int64_t>(i), &code, 1);
  }
}

ColumnView DataTable::View(int column, std::int64_t firstCase, std::size_t n,
                           ViewBuffer& buffer) const {
  const Column& source = At(column);
  if (source.fVariable.IsNumeric()) {
    return {source.fNumbers.Read(firstCase, n, buffer.fNumbers), nullptr, nullptr};
  }
  return {nullptr, source.fCodes.Read(firstCase, n, buffer.fCodes), &source.fStrings};
}

std::unique_ptr<ITableScan> DataTable::ScanViews(const std::vector<int>& columns,
                                                 std::size_t maxCases) {
  return std::make_unique<ViewScan>(*this, columns, maxCases);
}

void DataTable::ReadWhole(IArrowSource& source, const std::function<void()>& read) {
  try {
    return read();
  } catch (const HostIOError& error) {
    // Another file is one that the cells go to.
    if (error.File() != source.Name() || !source.LookAgain()) throw;
  }
  read();
}

void DataTable::DeclareColumns(ArrowStreamReader& reader) {
  fColumns.clear();
  for (int i = 0; i < reader.ColumnCount(); ++i) {
    const ArrowColumn& column = reader.Column(i);
    AddVariable(KOVA_Variable(column.Name(), column.IsNumeric() ? 0 : 1));
    GetVariable(i).SetLabel(column.Label());
    GetVariable(i).SetTime(column.Time());
    At(i).fNote = column.Note();
  }
  fNOwnColumns = ColumnCount();
}

void DataTable::FitWidth(int column) {
  KOVA_Variable& variable = GetVariable(column);
  if (variable.IsNumeric()) return;
  const auto width = static_cast<int>(std::max<std::size_t>(At(column).fStrings.MaxBytes(), 1));
  variable.SetType(width);
  variable.SetFormat({KOVA_Format::kString, width, 0});
  variable.SetWriteFormat(variable.GetFormat());
}

std::size_t DataTable::BatchCases(std::size_t nColumns) const {
  const std::size_t preferred = MCCommon::RecordBlock::PreferredCases(nColumns);
  return std::min(std::bit_floor(preferred), fMaxBatchCases);
}

}  // namespace MCHost
