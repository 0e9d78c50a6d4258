#include "host/data/MemoryTable.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "common/MCAssert.h"
#include "common/MissingValue.h"

namespace MCHost {

namespace {

constexpr char kSource[] = "host/data/MemoryTable";

constexpr int kReadingShare = 5;

ArrowArrayStream Open(IArrowSource& source, const std::vector<int>* columns) {
  ArrowArrayStream stream{};
  source.Open(columns, &stream);
  return stream;
}

}  // namespace

MemoryTable::MemoryTable(std::size_t maxBatchCases) { SetMaxBatchCases(maxBatchCases); }

MemoryTable::MemoryTable(ArrowArrayStream* stream, const std::string& source) {
  ArrowStreamReader reader(stream, source);
  DeclareColumns(reader);
  Load(reader, 0);
}

MemoryTable::MemoryTable(IArrowSource& source, std::size_t maxBytes) : fMaxBytes(maxBytes) {
  ReadWhole(source, [&] { ReadColumns(source); });
  fSourceNotes = source.Notes();
}

void MemoryTable::ReadColumns(IArrowSource& source) {
  ArrowArrayStream stream = Open(source, nullptr);
  ArrowStreamReader whole(&stream, source.Name());
  DeclareColumns(whole);
  // Beside the cells that are kept, a part of what reading may take is enough.
  const int group = std::max(source.ColumnsAtATime() / kReadingShare, 1);
  if (group >= ColumnCount()) {
    Load(whole, 0);
  } else {
    for (int first = 0; first < ColumnCount(); first += group) LoadColumns(source, first, group);
  }
}

MemoryTable::MemoryTable(std::unique_ptr<IArrowSource> source) : MemoryTable(*source) {
  fpSource = std::move(source);
}

void MemoryTable::LoadColumns(IArrowSource& source, int first, int count) {
  std::vector<int> columns(static_cast<std::size_t>(std::min(count, ColumnCount() - first)));
  std::iota(columns.begin(), columns.end(), first);
  ArrowArrayStream stream = Open(source, &columns);
  ArrowStreamReader reader(&stream, source.Name());
  Load(reader, first);
}

void MemoryTable::Load(ArrowStreamReader& reader, int firstColumn) {
  fNCases = 0;
  const std::size_t others = KeptBytes();
  const std::size_t most = fMaxBytes - std::min(others, fMaxBytes);
  while (reader.NextBatch()) LoadBatch(reader, firstColumn, most);
  for (int i = 0; i < reader.ColumnCount(); ++i) {
    FitWidth(firstColumn + i);
    At(firstColumn + i).fNumbers.Close();
    At(firstColumn + i).fCodes.Close();
    At(firstColumn + i).fNote = reader.Column(i).Note();
  }
}

void MemoryTable::LoadBatch(ArrowStreamReader& reader, int firstColumn, std::size_t maxBytes) {
  constexpr std::size_t kChunk = CellChunks<double>::kChunk;
  for (std::int64_t done = 0; done < reader.BatchCases();) {
    const auto left = static_cast<std::size_t>(reader.BatchCases() - done);
    const std::size_t n = std::min(left, kChunk - static_cast<std::size_t>(fNCases) % kChunk);
    std::size_t bytes = 0;
    for (int i = 0; i < reader.ColumnCount(); ++i) {
      Column& to = At(firstColumn + i);
      ArrowColumn& from = reader.Column(i);
      if (from.IsNumeric()) {
        from.ReadNumbers(done, n, to.fNumbers.Extend(n));
      } else {
        from.ReadCodes(done, n, to.fStrings, to.fCodes.Extend(n));
      }
      bytes += to.fNumbers.PackedBytes() + to.fCodes.PackedBytes();
    }
    if (bytes > maxBytes) throw Outgrown();
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
  return ScanViews(columns, CellChunks<double>::kChunk);
}

}  // namespace MCHost
