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

bool MustLookAtDigits(const CsvColumn& column) {
  return column.IsNumber() && (column.fKinds & kCsvSpelling) == kCsvMayHold;
}

}  // namespace

CsvSource::CsvSource(std::string path, CsvRules rules)
    : fName(std::move(path)),
      fbFile(true),
      fStamp(fName),
      fRules(std::move(rules)),
      fInspector(fName, fRules) {
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
  Types types;
  for (const CsvColumn& column : fInspector.Columns()) types.push_back(TypeOf(column));
  OpenAs(types, columns, stream);
}

void CsvSource::OpenOriginal(const std::vector<int>* columns, ArrowArrayStream* stream) {
  Types types;
  for (std::size_t j = 0; j < fInspector.Columns().size(); ++j) {
    const CsvColumn& column = fInspector.Columns()[j];
    const int place = static_cast<int>(j);
    const bool isWanted = !columns || std::binary_search(columns->begin(), columns->end(), place);
    if (!isWanted || column.fKinds == kCsvAll) {
      types.push_back(arrow::null());
    } else if (column.fKinds & kCsvWhole) {
      types.push_back(arrow::int64());
    } else {
      types.push_back(DigitsOf(j) == Digits::kLost ? arrow::utf8() : TypeOf(column));
    }
  }
  OpenAs(types, columns, stream);
}

CsvSource::Kept CsvSource::KeptOf(int place) {
  const auto j = static_cast<std::size_t>(place);
  const CsvColumn& column = fInspector.Columns()[j];
  if (column.fKinds == kCsvText) return Kept::kAll;
  if (!column.IsNumber()) return Kept::kPart;
  if (column.fKinds & kCsvWhole) return column.fbDigitsLost ? Kept::kPart : Kept::kAllOfIntegers;
  return DigitsOf(j) == Digits::kHeld ? Kept::kAll : Kept::kPart;
}

CsvSource::Digits CsvSource::DigitsOf(std::size_t column) {
  const CsvColumn& asked = fInspector.Columns()[column];
  if (asked.fKinds & kCsvHeld) return Digits::kHeld;
  if (!MustLookAtDigits(asked)) return Digits::kLost;
  if (fDigits.empty()) LookAtDigits();
  return fDigits[column];
}

void CsvSource::LookAtDigits() {
  const std::vector<CsvColumn>& columns = fInspector.Columns();
  fDigits.assign(columns.size(), Digits::kHeld);
  std::vector<std::size_t> unsure;
  for (std::size_t j = 0; j < columns.size(); ++j) {
    if (MustLookAtDigits(columns[j])) unsure.push_back(j);
  }
  CsvRecords records = Records();
  records.Next();
  while (!unsure.empty() && records.Next()) {
    for (const std::size_t j : unsure) LookAtDigit(records.Field(j), fDigits[j]);
    std::erase_if(unsure, [this](std::size_t j) { return fDigits[j] == Digits::kLost; });
  }
}

void CsvSource::LookAtDigit(std::string_view field, Digits& digits) const {
  if (!field.empty() && field[0] != '"' && CsvHoldsDigits(field)) {
    if (field.find_first_of("0123456789") == std::string_view::npos) digits = Digits::kHeldButWords;
    return;
  }
  const std::string text = CsvRecords::TextOf(field);
  const auto& nulls = fRules.fNullTokens;
  if (std::find(nulls.begin(), nulls.end(), text) != nulls.end()) return;
  if (field != text) return LookAtDigit(text, digits);
  digits = Digits::kLost;
}

CsvRecords CsvSource::Records() const { return {OpenBytes(), fRules.fDelimiter, fName}; }

std::shared_ptr<arrow::io::InputStream> CsvSource::OpenBytes() const {
  if (!fbFile) {
    return std::make_shared<arrow::io::BufferReader>(
        arrow::Buffer::Wrap(fText.data(), fText.size()));
  }
  fStamp.Check(fName);
  return Value(arrow::io::ReadableFile::Open(fName), fName);
}

void CsvSource::OpenAs(const Types& types, const std::vector<int>* columns,
                       ArrowArrayStream* stream) const {
  auto convert = arrow::csv::ConvertOptions::Defaults();
  convert.check_utf8 = false;  // the inspector has checked it
  convert.strings_can_be_null = true;
  convert.null_values = fRules.fNullTokens;
  arrow::FieldVector fields;
  for (std::size_t j = 0; j < types.size(); ++j) {
    const int place = static_cast<int>(j);
    if (columns && !std::binary_search(columns->begin(), columns->end(), place)) continue;
    fields.push_back(arrow::field(fInspector.Columns()[j].fName, types[j]));
    convert.column_types[fields.back()->name()] = types[j];
    convert.include_columns.push_back(fields.back()->name());
  }
  if (CaseCount() == 0) {
    auto none = Value(arrow::RecordBatchReader::Make({}, arrow::schema(std::move(fields))), fName);
    return Check(arrow::ExportRecordBatchReader(std::move(none), stream), fName);
  }
  auto read = arrow::csv::ReadOptions::Defaults();
  // A row must fit into two blocks.
  read.block_size = static_cast<std::int32_t>(
      std::clamp<std::int64_t>(fInspector.LongestRow() * 2, kPieceBytes, 1 << 30));
  auto parse = arrow::csv::ParseOptions::Defaults();
  parse.delimiter = fRules.fDelimiter;
  parse.newlines_in_values = fInspector.HasQuotedNewlines();
  auto reader = Value(arrow::csv::StreamingReader::Make(arrow::io::default_io_context(),
                                                        OpenBytes(), read, parse, convert),
                      fName);
  Check(arrow::ExportRecordBatchReader(std::move(reader), stream), fName);
}

std::vector<std::string> CsvSource::Notes() const {
  std::vector<std::string> notes;
  for (const CsvColumn& column : fInspector.Columns()) {
    if (!column.IsNumber() || !column.fbDigitsLost) continue;
    notes.push_back("Column \"" + column.fName +
                    "\" holds whole numbers beyond 2^53, whose last digits are lost.");
  }
  return notes;
}

}  // namespace MCHost
