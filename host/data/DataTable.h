// What the host's own tables have in common: the dictionary, the weight, the cells kept in memory
// and the notes on how data were read. MemoryTable keeps all its cells here, StreamedTable only
// those of variables that were added.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "common/MissingValue.h"
#include "host/data/ArrowStreamReader.h"
#include "host/data/CellChunks.h"
#include "host/data/IArrowSource.h"
#include "host/data/ITable.h"
#include "host/data/StringPool.h"

namespace MCHost {

class DataTable : public ITable {
 public:
  int ColumnCount() const override { return static_cast<int>(fColumns.size()); }
  KOVA_Variable& GetVariable(int column) override { return At(column).fVariable; }
  const KOVA_Variable& GetVariable(int column) const override { return At(column).fVariable; }

  int GetWeightVarIndex() const override { return fWeight; }
  // Makes a numeric variable the frequency weight; -1 for none.
  void SetWeightVarIndex(int column) { fWeight = column; }

  const WholeTable* Whole() const override { return fpWhole.get(); }
  void SetWhole(std::shared_ptr<const WholeTable> whole) { fpWhole = std::move(whole); }

  std::int64_t CaseCount() const { return fNCases; }

  // Columns that the data brought; those behind them were added.
  int OwnColumnCount() const { return fNOwnColumns; }

  // Whether all cells are in memory, so that it need not be spared.
  virtual bool KeepsCells() const { return true; }

  // What the cells in memory take, those of added variables aside.
  std::size_t KeptBytes() const;

  // Where the own columns come from and can be read again, null where they cannot.
  IArrowSource* Source() const { return fpSource.get(); }

  // What the user should know of how the data were read, one sentence each: of the source, and of
  // what its columns have become.
  std::vector<std::string> Notes() const;
  const std::vector<std::string>& SourceNotes() const { return fSourceNotes; }
  std::vector<std::string> ColumnNotes() const;

  // Makes a column without a value one of another kind. REQUIRES: an own column, not a cell of
  // which has a value; the table is not scanned.
  void TakeAsEmpty(int column, KOVA_Variable variable);

  int AddVariable(KOVA_Variable variable) override;
  void WriteNumbers(int column, std::int64_t firstCase, const double* values,
                    std::size_t n) override;
  void WriteStrings(int column, std::int64_t firstCase, const std::string* const* values,
                    std::size_t n) override;

 protected:
  struct Column {
    explicit Column(KOVA_Variable variable) : fVariable(std::move(variable)) {}
    KOVA_Variable fVariable;
    CellChunks<double> fNumbers{KOVA_SystemMissing};
    CellChunks<std::int32_t> fCodes{-1};
    StringPool fStrings;
    std::string fNote;     // "holds dates, ..." or empty
    bool fbEmpty = false;  // nothing of the source is shown
  };

  // Whether the cells of a column are those of the source.
  bool IsOfSource(int column) const { return column < fNOwnColumns && !At(column).fbEmpty; }

  Column& At(int column) { return fColumns[static_cast<std::size_t>(column)]; }
  const Column& At(int column) const { return fColumns[static_cast<std::size_t>(column)]; }

  // Where cells of a column stand that are not kept as they are shown.
  struct ViewBuffer {
    std::vector<double> fNumbers;
    std::vector<std::int32_t> fCodes;
  };

  // n kept cells of a column from a case on; they lie in one chunk. The buffer is void with the
  // next call for it.
  virtual ColumnView View(int column, std::int64_t firstCase, std::size_t n,
                          ViewBuffer& buffer) const;

  // Told when a scan made by ScanViews has left a batch.
  virtual void LeaveBatch(const TableBatch& /*batch*/) const {}

  // A scan that shows what View() shows, in batches of at most `maxCases`, a divisor of the chunks'
  // length.
  std::unique_ptr<ITableScan> ScanViews(const std::vector<int>& columns, std::size_t maxCases);

  // Calls `read`, which reads the whole source, and calls it again where the source proves not to
  // be what it was taken for. Throws HostIOError.
  static void ReadWhole(IArrowSource& source, const std::function<void()>& read);

  // A column for each of the stream's, without cells, in the place of all that were there.
  void DeclareColumns(ArrowStreamReader& reader);

  // Gives a string variable the width of its longest string, at least 1.
  void FitWidth(int column);

  // Cases that a scan of so many columns gives at a time: a divisor of the chunks' length.
  std::size_t BatchCases(std::size_t nColumns) const;

  // The most cases a batch may have. REQUIRES: a divisor of RecordBlock::kMaxCases.
  void SetMaxBatchCases(std::size_t cases) { fMaxBatchCases = cases; }

  std::int64_t fNCases = 0;
  int fNOwnColumns = 0;
  std::unique_ptr<IArrowSource> fpSource;
  std::vector<std::string> fSourceNotes;

 private:
  class ViewScan;

  std::deque<Column> fColumns;  // references stay valid while columns are added
  int fWeight = -1;
  std::shared_ptr<const WholeTable> fpWhole;
  std::size_t fMaxBatchCases = MCCommon::RecordBlock::kMaxCases;
};

}  // namespace MCHost
