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
#include "host/arrow/CsvPieces.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

constexpr std::int64_t kPieceBytes = std::int64_t{1} << 20;

bool MustLookAtDigits(const CsvColumn& column) {
  return column.IsNumber() && (column.fKinds & kCsvSpelling) == kCsvMayHold;
}

}  // namespace

CsvSource::CsvSource(std::string path, CsvRules rules, Look look, std::size_t startBytes)
    : fName(std::move(path)),
      fbFile(true),
      fStamp(fName),
      fRules(std::move(rules)),
      fStartBytes(startBytes),
      fInspector(fName, fRules) {
  Inspect(look);
}

CsvSource::CsvSource(std::string name, std::string text, CsvRules rules, Look look,
                     std::size_t startBytes)
    : fName(std::move(name)),
      fbFile(false),
      fText(std::move(text)),
      fRules(std::move(rules)),
      fStartBytes(startBytes),
      fInspector(fName, fRules) {
  Inspect(look);
}

void CsvSource::Inspect(Look look) {
  const auto bytes = OpenBytes();
  std::vector<char> piece(look == Look::kStart ? fStartBytes : kPieceBytes);
  const auto size = static_cast<std::int64_t>(piece.size());
  while (const std::int64_t n = Value(bytes->Read(size, piece.data()), fName)) {
    fInspector.Feed(piece.data(), static_cast<std::size_t>(n));
    fbStartOnly = look == Look::kStart && n == size && IsPromise();
    if (fbStartOnly) return;
  }
  fInspector.Finish();
}

// Whether the columns are known, and reading them as what they are so far shows what is not. Of
// values that must be true or false the reader takes 0 and 1, too, and then for all columns.
bool CsvSource::IsPromise() const {
  const auto isBoolean = [](const CsvColumn& column) {
    return column.fDeclared == FieldType::kBoolean;
  };
  const std::vector<CsvColumn>& columns = fInspector.Columns();
  return fInspector.CaseCount() > 0 && std::none_of(columns.begin(), columns.end(), isBoolean);
}

bool CsvSource::LookAgain() {
  if (!fbStartOnly) return false;
  fbStartOnly = false;
  fInspector = CsvInspector(fName, fRules);
  Inspect(Look::kWhole);
  return true;
}

void CsvSource::Open(const std::vector<int>* columns, ArrowArrayStream* stream) {
  Types types;
  for (const CsvColumn& column : fInspector.Columns()) types.push_back(CsvTypeOf(column.fKinds));
  OpenAs(types, columns, stream);
}

void CsvSource::OpenOriginal(const std::vector<int>* columns, ArrowArrayStream* stream) {
  LookAgain();
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
      types.push_back(DigitsOf(j) == Digits::kLost ? arrow::utf8() : CsvTypeOf(column.fKinds));
    }
  }
  OpenAs(types, columns, stream);
}

CsvSource::Kept CsvSource::KeptOf(int place) {
  LookAgain();
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
  auto schema = arrow::schema(std::move(fields));
  std::shared_ptr<arrow::RecordBatchReader> reader;
  if (fbStartOnly) {
    reader = ReadPieces(std::move(schema), std::move(convert));
  } else if (CaseCount() == 0) {
    reader = Value(arrow::RecordBatchReader::Make({}, std::move(schema)), fName);
  } else {
    reader = ReadLines(convert);
  }
  Check(arrow::ExportRecordBatchReader(std::move(reader), stream), fName);
}

std::shared_ptr<arrow::RecordBatchReader> CsvSource::ReadPieces(
    std::shared_ptr<arrow::Schema> schema, arrow::csv::ConvertOptions convert) const {
  convert.true_values = {"true", "True", "TRUE"};
  convert.false_values = {"false", "False", "FALSE"};
  CsvPieceRules rules{
      arrow::csv::ParseOptions::Defaults(), std::move(convert), {}, {}, fStartBytes};
  rules.fParse.delimiter = fRules.fDelimiter;
  for (const CsvColumn& column : fInspector.Columns()) {
    rules.fNames.push_back(column.fName);
    if (schema->GetFieldIndex(column.fName) < 0) continue;
    rules.fWhole.push_back(column.fDeclared == FieldType::kInteger);
  }
  return std::make_shared<CsvPieces>(OpenBytes(), std::move(schema), std::move(rules));
}

std::shared_ptr<arrow::RecordBatchReader> CsvSource::ReadLines(
    const arrow::csv::ConvertOptions& convert) const {
  auto read = arrow::csv::ReadOptions::Defaults();
  // A row must fit into two blocks.
  read.block_size = static_cast<std::int32_t>(
      std::clamp<std::int64_t>(fInspector.LongestRow() * 2, kPieceBytes, 1 << 30));
  auto parse = arrow::csv::ParseOptions::Defaults();
  parse.delimiter = fRules.fDelimiter;
  parse.newlines_in_values = fInspector.HasQuotedNewlines();
  return Value(arrow::csv::StreamingReader::Make(arrow::io::default_io_context(), OpenBytes(), read,
                                                 parse, convert),
               fName);
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
