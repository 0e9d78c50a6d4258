#include "host/data/StreamedTable.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "host/session/HostIOError.h"

namespace MCHost {

// Copies each batch out of the source's, so that the batches do not depend on how it cuts them.
class StreamedTable::StreamedScan : public ITableScan {
 public:
  StreamedScan(StreamedTable& table, const std::vector<int>& columns)
      : fpTable(&table), fColumns(columns), fBatchCases(table.BatchCases(columns.size())) {
    for (const int column : columns) {
      if (table.IsOfSource(column)) fOwn.push_back({column, {}, {}});
    }
    const auto before = [](const OwnColumn& a, const OwnColumn& b) {
      return a.fColumn < b.fColumn;
    };
    const auto same = [](const OwnColumn& a, const OwnColumn& b) { return a.fColumn == b.fColumn; };
    std::sort(fOwn.begin(), fOwn.end(), before);
    fOwn.erase(std::unique(fOwn.begin(), fOwn.end(), same), fOwn.end());
    fBuffers.resize(fColumns.size());
    for (OwnColumn& own : fOwn) own.Allocate(table.GetVariable(own.fColumn), fBatchCases);
    if (!fOwn.empty()) OpenSource();
    SetViews();
  }

  const TableBatch* Next() override {
    fBatch.fFirstCase += static_cast<std::int64_t>(fBatch.fNCases);
    const std::int64_t left = fpTable->CaseCount() - fBatch.fFirstCase;
    fBatch.fNCases = static_cast<std::size_t>(
        std::clamp<std::int64_t>(left, 0, static_cast<std::int64_t>(fBatchCases)));
    if (fpReader != nullptr) Fill();
    if (fBatch.fNCases == 0) return nullptr;
    for (std::size_t j = 0; j < fColumns.size(); ++j) {
      if (fpTable->IsOfSource(fColumns[j])) continue;
      fBatch.fColumns[j] =
          fpTable->View(fColumns[j], fBatch.fFirstCase, fBatch.fNCases, fBuffers[j]);
    }
    return &fBatch;
  }

 private:
  struct OwnColumn {
    int fColumn;
    std::vector<double> fNumbers;
    std::vector<std::int32_t> fCodes;

    void Allocate(const KOVA_Variable& variable, std::size_t n) {
      variable.IsNumeric() ? fNumbers.resize(n) : fCodes.resize(n);
    }
  };

  void OpenSource() {
    std::vector<int> columns;
    for (const OwnColumn& own : fOwn) columns.push_back(own.fColumn);
    fpReader = fpTable->Open(columns);
  }

  void SetViews() {
    fBatch.fColumns.resize(fColumns.size());
    for (std::size_t j = 0; j < fColumns.size(); ++j) {
      if (!fpTable->IsOfSource(fColumns[j])) continue;
      const auto own =
          std::lower_bound(fOwn.begin(), fOwn.end(), fColumns[j],
                           [](const OwnColumn& one, int column) { return one.fColumn < column; });
      ColumnView& view = fBatch.fColumns[j];
      if (fpTable->GetVariable(fColumns[j]).IsNumeric()) {
        view.fpNumbers = own->fNumbers.data();
      } else {
        view.fpCodes = own->fCodes.data();
        view.fpDictionary = &fpTable->At(fColumns[j]).fStrings;
      }
    }
  }

  // Fills the batch from as many batches of the source as it takes.
  void Fill() {
    std::size_t done = 0;
    while (done < fBatch.fNCases) {
      if (!SourceHasCases()) fpTable->Changed();
      const auto there = static_cast<std::size_t>(fpReader->BatchCases() - fSourceAt);
      const std::size_t n = std::min(there, fBatch.fNCases - done);
      CopyCases(done, n);
      done += n;
      fSourceAt += static_cast<std::int64_t>(n);
    }
    if (fBatch.fNCases == 0 && SourceHasCases()) fpTable->Changed();
  }

  bool SourceHasCases() {
    if (fSourceAt < fSourceCases) return true;
    fSourceAt = 0;
    KeepNotes();
    fSourceCases = fpReader->NextBatch() ? fpReader->BatchCases() : 0;
    return fSourceCases > 0;
  }

  // A column may learn while it is read what there is to say about it.
  void KeepNotes() {
    for (std::size_t k = 0; k < fOwn.size(); ++k) {
      fpTable->At(fOwn[k].fColumn).fNote = fpReader->Column(static_cast<int>(k)).Note();
    }
  }

  void CopyCases(std::size_t to, std::size_t n) {
    for (std::size_t k = 0; k < fOwn.size(); ++k) {
      OwnColumn& own = fOwn[k];
      ArrowColumn& from = fpReader->Column(static_cast<int>(k));
      if (!own.fNumbers.empty()) {
        from.ReadNumbers(fSourceAt, n, &own.fNumbers[to]);
      } else {
        from.ReadCodes(fSourceAt, n, fpTable->At(own.fColumn).fStrings, &own.fCodes[to]);
      }
    }
  }

  StreamedTable* fpTable;
  std::vector<int> fColumns;
  std::size_t fBatchCases;
  std::vector<ViewBuffer> fBuffers;
  std::vector<OwnColumn> fOwn;  // ascending, as the source gives them
  std::unique_ptr<ArrowStreamReader> fpReader;
  std::int64_t fSourceAt = 0;
  std::int64_t fSourceCases = 0;
  TableBatch fBatch;
};

StreamedTable::StreamedTable(std::unique_ptr<IArrowSource> source, std::size_t maxBatchCases) {
  fpSource = std::move(source);
  SetMaxBatchCases(maxBatchCases);
  ReadWhole(*fpSource, [this] { ReadSource(); });
  for (int i = 0; i < ColumnCount(); ++i) FitWidth(i);
  fSourceNotes = fpSource->Notes();
}

void StreamedTable::ReadSource() {
  fNCases = 0;
  {
    ArrowArrayStream stream{};
    fpSource->Open(nullptr, &stream);
    ArrowStreamReader whole(&stream, fpSource->Name());
    DeclareColumns(whole);
  }
  if (fpSource->ColumnsAtATime() < ColumnCount() || fpSource->IsReadOnce()) {
    Spool();
  } else {
    fpSpool = nullptr;
    ReadStrings();
  }
}

void StreamedTable::CountCases() {
  const bool isKnown = fpSource->CaseCount() >= 0 && ColumnCount() > 0;
  fNCases = isKnown ? fpSource->CaseCount() : 0;
  if (isKnown) return;
  const auto reader = Open(ColumnCount() > 0 ? std::vector<int>{0} : std::vector<int>());
  while (reader->NextBatch()) fNCases += reader->BatchCases();
}

void StreamedTable::ReadStrings() {
  std::vector<int> columns;
  for (int i = 0; i < ColumnCount(); ++i) {
    if (!GetVariable(i).IsNumeric()) columns.push_back(i);
  }
  if (columns.empty()) return CountCases();
  const auto reader = Open(columns);
  std::vector<std::int32_t> codes(MCCommon::RecordBlock::kMaxCases);
  while (reader->NextBatch()) {
    const std::int64_t cases = reader->BatchCases();
    for (std::size_t k = 0; k < columns.size(); ++k) {
      for (std::int64_t at = 0; at < cases; at += static_cast<std::int64_t>(codes.size())) {
        const auto n = std::min(codes.size(), static_cast<std::size_t>(cases - at));
        reader->Column(static_cast<int>(k)).ReadCodes(at, n, At(columns[k]).fStrings, codes.data());
      }
    }
    fNCases += cases;
  }
}

void StreamedTable::Spool() {
  std::vector<bool> numeric;
  numeric.reserve(static_cast<std::size_t>(ColumnCount()));
  for (int i = 0; i < ColumnCount(); ++i) numeric.push_back(GetVariable(i).IsNumeric());
  fpSpool = std::make_unique<CellSpool>(numeric);
  const int group = std::min(fpSource->ColumnsAtATime(), ColumnCount());
  int first = 0;
  do {  // also of no columns: there may be cases
    std::vector<int> columns(static_cast<std::size_t>(std::min(group, ColumnCount() - first)));
    std::iota(columns.begin(), columns.end(), first);
    fpSpool->Begin(columns.size());
    const std::int64_t cases = SpoolColumns(columns);
    if (first > 0 && cases != fNCases) Changed();
    fNCases = cases;
    first += group;
  } while (first < ColumnCount());
  fpSpool->Show();
}

std::int64_t StreamedTable::SpoolColumns(const std::vector<int>& columns) {
  const auto reader = Open(columns);
  std::int64_t cases = 0;
  while (reader->NextBatch()) {
    SpoolBatch(*reader, columns);
    cases += reader->BatchCases();
  }
  for (std::size_t k = 0; k < columns.size(); ++k) {
    At(columns[k]).fNote = reader->Column(static_cast<int>(k)).Note();
  }
  return cases;
}

void StreamedTable::SpoolBatch(ArrowStreamReader& reader, const std::vector<int>& columns) {
  for (std::int64_t done = 0; done < reader.BatchCases();) {
    const auto left = static_cast<std::size_t>(reader.BatchCases() - done);
    const std::size_t n = std::min(left, fpSpool->Room());
    for (std::size_t k = 0; k < columns.size(); ++k) {
      ArrowColumn& from = reader.Column(static_cast<int>(k));
      const auto column = static_cast<std::size_t>(columns[k]);
      if (from.IsNumeric()) {
        from.ReadNumbers(done, n, fpSpool->NextNumbers(column));
      } else {
        from.ReadCodes(done, n, At(columns[k]).fStrings, fpSpool->NextCodes(column));
      }
    }
    fpSpool->Advance(n);
    done += static_cast<std::int64_t>(n);
  }
}

ColumnView StreamedTable::View(int column, std::int64_t firstCase, std::size_t n,
                               ViewBuffer& buffer) const {
  if (fpSpool == nullptr || !IsOfSource(column)) {
    return DataTable::View(column, firstCase, n, buffer);
  }
  const auto at = static_cast<std::size_t>(column);
  if (GetVariable(column).IsNumeric()) {
    return {fpSpool->Read(at, firstCase, n, buffer.fNumbers), nullptr, nullptr};
  }
  return {nullptr, fpSpool->Read(at, firstCase, n, buffer.fCodes), &At(column).fStrings};
}

void StreamedTable::LeaveBatch(const TableBatch& batch) const {
  const std::int64_t end = batch.fFirstCase + static_cast<std::int64_t>(batch.fNCases);
  const bool isBlockEnd =
      fpSpool != nullptr && end % static_cast<std::int64_t>(fpSpool->BlockCases()) == 0;
  if (isBlockEnd) fpSpool->Forget(batch.fFirstCase);
}

void StreamedTable::Changed() const {
  throw HostIOError(fpSource->Name(), "", "the data changed while they were read");
}

std::unique_ptr<ArrowStreamReader> StreamedTable::Open(const std::vector<int>& columns) {
  ArrowArrayStream stream{};
  fpSource->Open(&columns, &stream);
  auto reader = std::make_unique<ArrowStreamReader>(&stream, fpSource->Name());
  bool same = reader->ColumnCount() == static_cast<int>(columns.size());
  for (std::size_t k = 0; k < columns.size() && same; ++k) {
    const ArrowColumn& column = reader->Column(static_cast<int>(k));
    const KOVA_Variable& variable = GetVariable(columns[k]);
    same = column.Name() == variable.GetName() && column.IsNumeric() == variable.IsNumeric();
  }
  if (!same) Changed();
  return reader;
}

std::unique_ptr<ITableScan> StreamedTable::Scan(const std::vector<int>& columns) {
  if (fpSpool != nullptr) return ScanViews(columns, fpSpool->BlockCases());
  return std::make_unique<StreamedScan>(*this, columns);
}

}  // namespace MCHost
