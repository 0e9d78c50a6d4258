#include "host/data/MemoryTable.h"

#include <algorithm>
#include <utility>

#include "common/MCAssert.h"
#include "common/MissingValue.h"
#include "host/data/IArrowSource.h"

namespace MCHost {

namespace {

constexpr char kSource[] = "host/data/MemoryTable";

ArrowArrayStream OpenWhole(IArrowSource& source) {
  ArrowArrayStream stream{};
  source.Open(nullptr, &stream);
  return stream;
}

}  // namespace

class MemoryTable::MemoryScan : public ITableScan {
 public:
  MemoryScan(const MemoryTable& table, std::vector<int> columns)
      : fpTable(&table),
        fColumns(std::move(columns)),
        fBatchCases(table.BatchCases(fColumns.size())) {
    fBatch.fColumns.resize(fColumns.size());
  }

  const TableBatch* Next() override {
    fBatch.fFirstCase += static_cast<std::int64_t>(fBatch.fNCases);
    const std::int64_t left = fpTable->CaseCount() - fBatch.fFirstCase;
    if (left <= 0) return nullptr;
    fBatch.fNCases = std::min(fBatchCases, static_cast<std::size_t>(left));
    for (std::size_t j = 0; j < fColumns.size(); ++j) {
      fBatch.fColumns[j] = fpTable->View(fColumns[j], fBatch.fFirstCase);
    }
    return &fBatch;
  }

 private:
  const MemoryTable* fpTable;
  std::vector<int> fColumns;
  std::size_t fBatchCases;
  TableBatch fBatch;
};

MemoryTable::MemoryTable(std::size_t maxBatchCases) { SetMaxBatchCases(maxBatchCases); }

MemoryTable::MemoryTable(ArrowArrayStream* stream, const std::string& source) {
  ArrowStreamReader reader(stream, source);
  Load(reader);
}

MemoryTable::MemoryTable(IArrowSource& source) {
  ArrowArrayStream stream = OpenWhole(source);
  ArrowStreamReader reader(&stream, source.Name());
  Load(reader);
  fSourceNotes = source.Notes();
}

void MemoryTable::Load(ArrowStreamReader& reader) {
  DeclareColumns(reader);
  while (reader.NextBatch()) LoadBatch(reader);
  for (int i = 0; i < ColumnCount(); ++i) {
    FitWidth(i);
    At(i).fNote = reader.Column(i).Note();
  }
}

void MemoryTable::LoadBatch(ArrowStreamReader& reader) {
  constexpr std::size_t kChunk = CellChunks<double>::kChunk;
  for (std::int64_t done = 0; done < reader.BatchCases();) {
    const auto left = static_cast<std::size_t>(reader.BatchCases() - done);
    const std::size_t n = std::min(left, kChunk - static_cast<std::size_t>(fNCases) % kChunk);
    for (int i = 0; i < ColumnCount(); ++i) {
      Column& to = At(i);
      ArrowColumn& from = reader.Column(i);
      if (from.IsNumeric()) {
        from.ReadNumbers(done, n, to.fNumbers.Extend(n));
      } else {
        from.ReadCodes(done, n, to.fStrings, to.fCodes.Extend(n));
      }
    }
    done += static_cast<std::int64_t>(n);
    fNCases += static_cast<std::int64_t>(n);
  }
}

int MemoryTable::AddOwnColumn(const std::string& name, int type, std::size_t nCases) {
  MCCommon::Assert(fNOwnColumns == ColumnCount(), "own columns come before added ones", kSource);
  MCCommon::Assert(fNOwnColumns == 0 || static_cast<std::int64_t>(nCases) == fNCases,
                   "all columns have the same length", kSource);
  fNCases = static_cast<std::int64_t>(nCases);
  ++fNOwnColumns;
  return AddVariable(KOVA_Variable(name, type));
}

int MemoryTable::AddNumbers(const std::string& name, const std::vector<double>& values) {
  const int column = AddOwnColumn(name, 0, values.size());
  CellChunks<double>& cells = At(column).fNumbers;
  for (const double value : values) {
    *cells.Extend(1) = MCMV::IsMissing(value) ? KOVA_SystemMissing : value;
  }
  return column;
}

int MemoryTable::AddStrings(const std::string& name,
                            const std::vector<std::optional<std::string>>& values) {
  const int column = AddOwnColumn(name, 1, values.size());
  Column& to = At(column);
  for (const auto& value : values) *to.fCodes.Extend(1) = value ? to.fStrings.Code(*value) : -1;
  FitWidth(column);
  return column;
}

std::unique_ptr<ITableScan> MemoryTable::Scan(const std::vector<int>& columns) {
  return std::make_unique<MemoryScan>(*this, columns);
}

}  // namespace MCHost
