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

bool IsPlainText(const CsvColumn& column) { return column.fKinds == kCsvText; }

// What somebody may want to mend.
std::string NearlyNumbersNote(const CsvColumn& column) {
  const NearlyNumbers& nearly = column.fNearly;
  std::string note = "Column \"" + column.fName + "\" holds texts instead of numbers because of " +
                     std::to_string(nearly.TextCount()) + " of its " +
                     std::to_string(nearly.CellCount()) + " cells: ";
  std::string codes;
  for (const std::string& text : nearly.Texts()) {
    note += (codes.empty() ? "\"" : ", \"") + text + "\"";
    codes += (codes.empty() ? "" : ",") + text;
  }
  return note + (nearly.HasMoreTexts() ? " and others" : "") + ". --missing \"" + column.fName +
         "=" + codes + "\" takes " + (nearly.Texts().size() == 1 ? "it" : "them") + " as missing.";
}

bool MustLookAtDigits(const CsvColumn& column) {
  return column.IsNumber() && (column.fKinds & kCsvSpelling) == kCsvMayHold;
}

}  // namespace

CsvSource::CsvSource(TextBytes bytes, CsvRules rules, Look look, std::size_t startBytes)
    : fBytes(std::move(bytes)),
      fRules(std::move(rules)),
      fStartBytes(startBytes),
      fInspector(Name(), fRules) {
  Inspect(look);
}

CsvSource::CsvSource(std::string path, CsvRules rules, Look look, std::size_t startBytes)
    : CsvSource(TextBytes(std::move(path)), std::move(rules), look, startBytes) {}

CsvSource::CsvSource(std::string name, std::string text, CsvRules rules, Look look,
                     std::size_t startBytes)
    : CsvSource(TextBytes::Of(std::move(name), std::move(text)), std::move(rules), look,
                startBytes) {}

void CsvSource::Inspect(Look look) {
  const auto bytes = fBytes.Open();
  std::vector<char> piece(look == Look::kStart ? fStartBytes : kPieceBytes);
  const auto size = static_cast<std::int64_t>(piece.size());
  while (const std::int64_t n = Value(bytes->Read(size, piece.data()), Name())) {
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
  // How many cells keep a column from being one of numbers, only the whole file tells.
  const auto isNearly = [](const CsvColumn& column) {
    return IsPlainText(column) && column.IsWatched();
  };
  const std::vector<CsvColumn>& columns = fInspector.Columns();
  return fInspector.CaseCount() > 0 && std::none_of(columns.begin(), columns.end(), isBoolean) &&
         std::none_of(columns.begin(), columns.end(), isNearly);
}

bool CsvSource::LookAgain() {
  if (!fbStartOnly) return false;
  fbStartOnly = false;
  fInspector = CsvInspector(Name(), fRules);
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
  if (fRules.fbHeader) records.Next();
  while (!unsure.empty() && records.Next()) {
    for (const std::size_t j : unsure) LookAtDigit(records, j, fDigits[j]);
    std::erase_if(unsure, [this](std::size_t j) { return fDigits[j] == Digits::kLost; });
  }
}

void CsvSource::LookAtDigit(const CsvRecords& records, std::size_t column, Digits& digits) const {
  const std::string_view field = records.Field(column);
  std::string text;
  std::string_view number = field;
  bool isHeld = fRules.fNumbers.ArePlain() && !field.empty() && field[0] != fRules.fQuote &&
                CsvHoldsDigits(field);  // as most are
  if (!isHeld) {
    text = records.TextOf(field);
    const auto isAmong = [&text](const std::vector<std::string>& nulls) {
      return std::find(nulls.begin(), nulls.end(), text) != nulls.end();
    };
    if (isAmong(fRules.fNullTokens) || isAmong(fInspector.Columns()[column].fNulls)) return;
    if (auto plain = PlainNumberOf(text, fRules.fNumbers)) text = std::move(plain->fText);
    number = text;
    isHeld = CsvHoldsDigits(number);
  }
  if (!isHeld) {
    digits = Digits::kLost;
  } else if (number.find_first_of("0123456789") == std::string_view::npos) {
    digits = Digits::kHeldButWords;
  }
}

CsvRecords CsvSource::Records() const {
  return {fBytes.Open(), fRules.fDelimiter, Name(), fRules.fQuote};
}

bool CsvSource::IsUsual() const {
  return fRules.fbHeader && fRules.fQuote == '"' && fRules.fNumbers.ArePlain();
}

void CsvSource::OpenAs(const Types& types, const std::vector<int>* columns,
                       ArrowArrayStream* stream) const {
  std::vector<int> places;
  arrow::FieldVector fields;
  for (std::size_t j = 0; j < types.size(); ++j) {
    const int place = static_cast<int>(j);
    if (columns && !std::binary_search(columns->begin(), columns->end(), place)) continue;
    places.push_back(place);
    fields.push_back(arrow::field(fInspector.Columns()[j].fName, types[j]));
  }
  std::shared_ptr<arrow::RecordBatchReader> reader;
  if (fbStartOnly) {
    reader = ReadPieces(std::move(fields), std::move(places));
  } else if (CaseCount() == 0) {
    reader = Value(arrow::RecordBatchReader::Make({}, arrow::schema(std::move(fields))), Name());
  } else {
    reader = ReadLines(fields, places);
  }
  Check(arrow::ExportRecordBatchReader(std::move(reader), stream), Name());
}

// Whether only texts of its own make a column what it is.
bool CsvSource::IsTurned(int place, const arrow::Field& field) const {
  const CsvColumn& column = fInspector.Columns()[static_cast<std::size_t>(place)];
  const bool isNumber = field.type()->id() == arrow::Type::DOUBLE;
  return !column.fNulls.empty() || (isNumber && column.fbGrouped);
}

arrow::csv::ParseOptions CsvSource::ParseOptions() const {
  auto parse = arrow::csv::ParseOptions::Defaults();
  parse.delimiter = fRules.fDelimiter;
  parse.quoting = fRules.fQuote != kNoMark;
  if (parse.quoting) parse.quote_char = fRules.fQuote;
  return parse;
}

std::vector<std::string> CsvSource::ColumnNames() const {
  std::vector<std::string> names;
  for (const CsvColumn& column : fInspector.Columns()) names.push_back(column.fName);
  return names;
}

std::shared_ptr<arrow::RecordBatchReader> CsvSource::ReadPieces(arrow::FieldVector fields,
                                                                std::vector<int> places) const {
  const auto words = arrow::dictionary(arrow::int32(), arrow::utf8());
  CsvTexts texts(fRules.fNumbers);
  texts.ExpectNothing();
  std::vector<bool> whole;
  for (std::size_t k = 0; k < fields.size(); ++k) {
    const CsvColumn& column = fInspector.Columns()[static_cast<std::size_t>(places[k])];
    const auto type = fields[k]->type();
    const arrow::Type::type id = type->id();
    const bool isDecoded =
        id == arrow::Type::DOUBLE || id == arrow::Type::STRING || id == arrow::Type::NA;
    const bool isTurned = !isDecoded || IsTurned(places[k], *fields[k]);
    if (isTurned) texts.Add(static_cast<int>(k), type, column.fNulls);
    if (isTurned) fields[k] = fields[k]->WithType(arrow::utf8());
    if (!isTurned && id == arrow::Type::STRING) fields[k] = fields[k]->WithType(words);
    whole.push_back(column.fDeclared == FieldType::kInteger);
  }
  CsvPromise promise{fRules.fDelimiter,
                     fRules.fQuote,
                     fRules.fNumbers.fDecimal,
                     fRules.fNullTokens,
                     fInspector.Columns().size(),
                     arrow::schema(std::move(fields)),
                     std::move(places),
                     std::move(whole),
                     std::move(texts)};
  return std::make_shared<CsvPieces>(
      fBytes.Open(), CsvPieceRules{std::move(promise), fStartBytes, fRules.fbHeader});
}

// Which count where the header is skipped as a row.
std::int32_t CsvSource::BlankLinesAtStart() const {
  CsvRecords records = Records();
  records.Next();
  std::int32_t n = 0;
  char before = ' ';
  for (const char c : records.Before()) {
    if (c == '\r' || (c == '\n' && before != '\r')) ++n;
    before = c;
  }
  return n;
}

std::shared_ptr<arrow::RecordBatchReader> CsvSource::ReadLines(
    const arrow::FieldVector& fields, const std::vector<int>& places) const {
  auto convert = arrow::csv::ConvertOptions::Defaults();
  convert.check_utf8 = false;  // the inspector has checked it
  convert.strings_can_be_null = true;
  convert.null_values = fRules.fNullTokens;
  convert.decimal_point = fRules.fNumbers.fDecimal;
  CsvTexts texts(fRules.fNumbers);
  for (std::size_t k = 0; k < fields.size(); ++k) {
    const std::string& name = fields[k]->name();
    const auto& type = fields[k]->type();
    const auto& nulls = fInspector.Columns()[static_cast<std::size_t>(places[k])].fNulls;
    const bool isTurned = IsTurned(places[k], *fields[k]);
    if (isTurned) texts.Add(static_cast<int>(k), type, nulls);
    convert.column_types[name] = isTurned ? arrow::utf8() : type;
    convert.include_columns.push_back(name);
  }
  auto read = arrow::csv::ReadOptions::Defaults();
  // A row must fit into two blocks.
  read.block_size = static_cast<std::int32_t>(
      std::clamp<std::int64_t>(fInspector.LongestRow() * 2, kPieceBytes, 1 << 30));
  const std::vector<CsvColumn>& columns = fInspector.Columns();
  const bool areNamed = std::all_of(columns.begin(), columns.end(),
                                    [](const CsvColumn& column) { return column.fbNamed; });
  if (!fRules.fbHeader || !areNamed) read.column_names = ColumnNames();
  if (fRules.fbHeader && !areNamed) read.skip_rows_after_names = 1 + BlankLinesAtStart();
  auto parse = ParseOptions();
  parse.newlines_in_values = fInspector.HasQuotedNewlines();
  return texts.Turn(Value(arrow::csv::StreamingReader::Make(arrow::io::default_io_context(),
                                                            fBytes.Open(), read, parse, convert),
                          Name()));
}

std::vector<std::string> CsvSource::Notes() const {
  std::vector<std::string> notes = fRules.fNotes;
  for (const CsvColumn& column : fInspector.Columns()) {
    if (column.IsNumber() && column.fbDigitsLost) {
      notes.push_back("Column \"" + column.fName +
                      "\" holds whole numbers beyond 2^53, whose last digits are lost.");
    }
    if (IsPlainText(column) && column.fNearly.AreThere()) {
      notes.push_back(NearlyNumbersNote(column));
    }
  }
  return notes;
}

}  // namespace MCHost
