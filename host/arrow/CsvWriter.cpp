#include "host/arrow/CsvWriter.h"

#include <arrow/record_batch.h>
#include <arrow/type.h>

#include <cstdint>
#include <string_view>

#include "host/arrow/ArrowFailure.h"
#include "host/arrow/CsvCells.h"
#include "host/arrow/CsvRecords.h"
#include "host/arrow/SavedBatches.h"
#include "host/arrow/TextFile.h"
#include "host/session/HostIOError.h"
#include "host/text/CsvText.h"

namespace MCHost {

namespace {

// Calls `append` for the cells of a row.
template <class Append>
void AppendRow(std::string& text, Append append) {
  const std::size_t start = text.size();
  append();
  if (text.size() == start) text += "\"\"";
}

void AppendNames(std::string& text, const arrow::Schema& schema, char delimiter) {
  for (int j = 0; j < schema.num_fields(); ++j) {
    if (j > 0) text += delimiter;
    AppendCsvText(text, schema.field(j)->name(), delimiter);
  }
}

// The cells of a stream case by case.
class CellsOfCases {
 public:
  CellsOfCases(arrow::RecordBatchReader& batches, char delimiter, const std::string& path)
      : fpBatches(&batches), fCells(delimiter, path), fPath(path) {}

  bool HasNext() {
    while (fAt == fCases && !fbEnded) {
      const auto batch = Value(fpBatches->Next(), fPath);
      fbEnded = batch == nullptr;
      fAt = 0;
      fCases = fbEnded ? 0 : batch->num_rows();
      if (!fbEnded) fCells.Format(*batch);
    }
    return !fbEnded;
  }

  // REQUIRES: HasNext().
  void AppendNext(std::string& text) { fCells.AppendCase(fAt++, text); }

 private:
  arrow::RecordBatchReader* fpBatches;
  CsvCells fCells;
  std::string fPath;
  std::int64_t fCases = 0;
  std::int64_t fAt = 0;
  bool fbEnded = false;
};

void AppendField(std::string& text, std::string_view field, char delimiter) {
  if (field.starts_with('"') || IsPlainCsvText(field, delimiter)) {
    text += field;
  } else {
    AppendCsvText(text, field, delimiter);
  }
}

void AppendOwn(std::string& text, const CsvRecords& records, const std::vector<int>* keys,
               char delimiter) {
  if (keys == nullptr && delimiter == records.Delimiter()) {
    text += records.Record();
    return;
  }
  const std::size_t n = keys != nullptr ? keys->size() : records.FieldCount();
  for (std::size_t k = 0; k < n; ++k) {
    if (k > 0) text += delimiter;
    const std::size_t field = keys != nullptr ? static_cast<std::size_t>((*keys)[k]) : k;
    AppendField(text, records.Field(field), delimiter);
  }
}

}  // namespace

void WriteCsv(SavedBatches& batches, const std::string& path, char delimiter) {
  TextFile file(path);
  std::string& text = file.Text();
  AppendNames(text, *batches.Schema(), delimiter);
  text += '\n';
  CsvCells cells(delimiter, path);
  while (const auto batch = batches.Next()) {
    cells.Format(*batch);
    for (std::int64_t i = 0; i < batch->num_rows(); ++i) {
      AppendRow(text, [&] { cells.AppendCase(i, text); });
      text += '\n';
      file.Pass();
    }
  }
  file.Finish();
}

void CopyCsv(CsvRecords& records, const std::vector<int>* keys, arrow::RecordBatchReader& added,
             const std::string& path, char delimiter) {
  const auto fail = [&records] {
    throw HostIOError(records.Source(), "", "the data changed while they were read");
  };
  const bool hasOwn = keys == nullptr || !keys->empty();
  const bool hasBoth = hasOwn && added.schema()->num_fields() > 0;
  TextFile file(path);
  std::string& text = file.Text();
  CellsOfCases cells(added, delimiter, path);
  for (bool isHeader = true; records.Next(); isHeader = false) {
    text += records.Before();
    if (!isHeader && !cells.HasNext()) fail();
    AppendRow(text, [&] {
      AppendOwn(text, records, keys, delimiter);
      if (hasBoth) text += delimiter;
      isHeader ? AppendNames(text, *added.schema(), delimiter) : cells.AppendNext(text);
    });
    file.Pass();
  }
  text += records.Before();
  if (cells.HasNext()) fail();
  file.Finish();
}

}  // namespace MCHost
