#include "host/arrow/CsvSource.h"

#include <arrow/buffer.h>
#include <arrow/c/bridge.h>
#include <arrow/csv/api.h>
#include <arrow/io/api.h>
#include <arrow/record_batch.h>
#include <arrow/type.h>

#include <algorithm>
#include <utility>

#include "host/arrow/ArrowFailure.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

constexpr std::int64_t kPieceBytes = std::int64_t{1} << 20;

// The type that the file's reader is told for a column. The order settles what a column is whose
// values fit several kinds.
std::shared_ptr<arrow::DataType> TypeOf(const CsvColumn& column) {
  const unsigned kinds = column.fKinds;
  if (kinds == kCsvText) return arrow::utf8();
  if (kinds == kCsvAll) return arrow::null();
  if (kinds & kCsvNumber) return arrow::float64();
  if (kinds & kCsvBoolean) return arrow::boolean();
  if (kinds & kCsvDate) return arrow::date32();
  if (kinds & kCsvDateTime) return arrow::timestamp(arrow::TimeUnit::MICRO);
  if (kinds & kCsvZonedTime) return arrow::timestamp(arrow::TimeUnit::MICRO, "UTC");
  return arrow::time64(arrow::TimeUnit::MICRO);
}

std::vector<CsvColumn> Choose(const std::vector<CsvColumn>& all, const std::vector<int>* columns) {
  if (columns == nullptr) return all;
  std::vector<CsvColumn> chosen;
  for (const int column : *columns) chosen.push_back(all[static_cast<std::size_t>(column)]);
  return chosen;
}

std::shared_ptr<arrow::RecordBatchReader> NoCases(const std::vector<CsvColumn>& columns,
                                                  const std::string& name) {
  arrow::FieldVector fields;
  for (const CsvColumn& column : columns) fields.push_back(field(column.fName, TypeOf(column)));
  return Value(arrow::RecordBatchReader::Make({}, arrow::schema(std::move(fields))), name);
}

}  // namespace

CsvSource::CsvSource(std::string path, CsvRules rules)
    : fName(std::move(path)), fbFile(true), fRules(std::move(rules)), fInspector(fName, fRules) {
  InspectFile();
}

CsvSource::CsvSource(std::string name, std::string text, CsvRules rules)
    : fName(std::move(name)),
      fbFile(false),
      fText(std::move(text)),
      fRules(std::move(rules)),
      fInspector(fName, fRules) {
  fInspector.Feed(fText.data(), fText.size());
  fInspector.Finish();
}

void CsvSource::InspectFile() {
  const auto file = Value(arrow::io::ReadableFile::Open(fName), fName);
  std::vector<char> piece(kPieceBytes);
  while (const std::int64_t n = Value(file->Read(kPieceBytes, piece.data()), fName)) {
    fInspector.Feed(piece.data(), static_cast<std::size_t>(n));
  }
  fInspector.Finish();
}

void CsvSource::Open(const std::vector<int>* columns, ArrowArrayStream* stream) {
  const std::vector<CsvColumn> chosen = Choose(fInspector.Columns(), columns);
  if (CaseCount() == 0) {
    return Check(arrow::ExportRecordBatchReader(NoCases(chosen, fName), stream), fName);
  }
  auto read = arrow::csv::ReadOptions::Defaults();
  // A row must fit into two blocks.
  read.block_size = static_cast<std::int32_t>(
      std::clamp<std::int64_t>(fInspector.LongestRow() * 2, kPieceBytes, 1 << 30));
  auto parse = arrow::csv::ParseOptions::Defaults();
  parse.delimiter = fRules.fDelimiter;
  parse.newlines_in_values = fInspector.HasQuotedNewlines();
  auto convert = arrow::csv::ConvertOptions::Defaults();
  convert.check_utf8 = false;  // the inspector has checked it
  convert.strings_can_be_null = true;
  convert.null_values = fRules.fNullTokens;
  for (const CsvColumn& column : chosen) {
    convert.column_types[column.fName] = TypeOf(column);
    convert.include_columns.push_back(column.fName);
  }
  std::shared_ptr<arrow::io::InputStream> input;
  if (fbFile) {
    input = Value(arrow::io::ReadableFile::Open(fName), fName);
  } else {
    input =
        std::make_shared<arrow::io::BufferReader>(arrow::Buffer::Wrap(fText.data(), fText.size()));
  }
  auto reader = Value(arrow::csv::StreamingReader::Make(arrow::io::default_io_context(), input,
                                                        read, parse, convert),
                      fName);
  Check(arrow::ExportRecordBatchReader(std::move(reader), stream), fName);
}

std::vector<std::string> CsvSource::Notes() const {
  std::vector<std::string> notes;
  for (const CsvColumn& column : fInspector.Columns()) {
    if (column.fKinds != kCsvNumber || !column.fbDigitsLost) continue;
    notes.push_back("Column \"" + column.fName +
                    "\" holds whole numbers beyond 2^53, whose last digits are lost.");
  }
  return notes;
}

}  // namespace MCHost
