#include "host/arrow/CsvDecoder.h"

#include <arrow/array.h>
#include <arrow/type.h>
#include <arrow/util/value_parsing.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

#include "host/arrow/CsvBounds.h"
#include "host/arrow/CsvDecodedColumn.h"
#include "host/arrow/CsvKinds.h"
#include "host/arrow/ShortDecimal.h"
#include "host/text/Utf8.h"

namespace MCHost {

namespace {

bool IsLineEnd(char c) { return c == '\n' || c == '\r'; }

// Beyond what a double holds exactly, digits may be lost, and only the text tells.
bool IsLarge(double value) {
  constexpr double kExactIntegers = 9007199254740992.0;  // 2^53
  const double size = std::abs(value);
  return size >= kExactIntegers && size <= std::numeric_limits<double>::max();
}

// A number in any spelling that needs no look at the whole file.
bool ReadNumber(std::string_view text, char point, double& value) {
  constexpr std::string_view kBlanks = " \t";
  if (text.size() > kCsvLongestOther) return false;
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return false;
  text = text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
  return arrow::internal::StringToFloat(text.data(), text.size(), point, &value) && !IsLarge(value);
}

}  // namespace

// One text on its way into columns.
class CsvDecoder::Lines {
 public:
  Lines(const CsvDecoder& decoder, std::string_view text, const CsvBounds& bounds)
      : fpDecoder(&decoder), fpPromise(&decoder.fPromise), fText(text), fpBounds(&bounds) {}

  arrow::Result<std::shared_ptr<arrow::RecordBatch>> Read() {
    ARROW_RETURN_NOT_OK(MakeColumns());
    ARROW_RETURN_NOT_OK(ReadFields());
    std::vector<std::shared_ptr<arrow::ArrayData>> arrays;
    for (const int place : fpPromise->fPlaces) {
      Column& column = fColumns[static_cast<std::size_t>(place)];
      ARROW_ASSIGN_OR_RAISE(auto array, column.fCells.Finish(fRow));
      arrays.push_back(std::move(array));
    }
    return arrow::RecordBatch::Make(fpPromise->fpSchema, static_cast<std::int64_t>(fRow),
                                    std::move(arrays));
  }

 private:
  struct Column {
    Reading fReading = Reading::kSkipped;
    double* fpNumbers = nullptr;
    CsvDecodedColumn fCells;
  };

  arrow::Status MakeColumns() {
    fColumns.resize(fpPromise->fnColumns);
    // Each line has at least as many bounds as there are columns.
    const std::size_t most = fpBounds->Count() / fColumns.size() + 1;
    for (std::size_t j = 0; j < fpPromise->fPlaces.size(); ++j) {
      const auto place = static_cast<std::size_t>(fpPromise->fPlaces[j]);
      Column& column = fColumns[place];
      column.fReading = fpDecoder->fReadings[place];
      const auto& type = fpPromise->fpSchema->field(static_cast<int>(j))->type();
      ARROW_ASSIGN_OR_RAISE(column.fCells, CsvDecodedColumn::Make(type, most));
      column.fpNumbers = column.fCells.Numbers();
    }
    return arrow::Status::OK();
  }

  // Field after field, each up to the bound behind it.
  arrow::Status ReadFields() {
    const char delimiter = fpPromise->fDelimiter;
    const char point = fpPromise->fDecimal;
    const bool arePlain = !fpDecoder->fbNumberIsNull;
    const std::uint32_t* const places = fpBounds->Places();
    const std::size_t last = fColumns.size() - 1;
    const char* start = fText.data();
    std::size_t column = 0;
    for (std::size_t k = 0; k < fpBounds->Count(); ++k) {
      const char* end = fText.data() + places[k];
      std::string_view field(start, static_cast<std::size_t>(end - start));
      if (!IsLineEnd(*end) && *end != delimiter) {
        if (end != start) continue;  // a quote within a field
        k = Unquote(k, field);
        if (k == fpBounds->Count()) return NotAsPromised();
        end = fText.data() + places[k];
      }
      const bool isLineEnd = *end != delimiter;
      if (isLineEnd && column == 0 && end == start) {
        start = end + 1;
        continue;  // a blank line
      }
      if ((column == last) != isLineEnd) return NotAsPromised();
      Column& cells = fColumns[column];
      const bool isShort =
          cells.fReading == Reading::kNumbers && arePlain &&
          ReadShortDecimal(field.data(), field.size(), point, cells.fpNumbers[fRow]);
      if (!isShort) ARROW_RETURN_NOT_OK(Take(cells, field));
      column = isLineEnd ? 0 : column + 1;
      fRow += isLineEnd ? 1 : 0;
      start = end + 1;
    }
    return arrow::Status::OK();
  }

  // Makes the field that a quote opens what stands in it, and gives the bound behind the closing
  // one; past all bounds where it is not closed in its line, or anything but a bound follows.
  std::size_t Unquote(std::size_t k, std::string_view& field) {
    const std::size_t none = fpBounds->Count();
    const char quote = fpPromise->fQuote;
    const char* const first = fText.data() + fpBounds->Places()[k] + 1;
    bool isDoubled = false;
    while (++k < none) {
      const char* const at = fText.data() + fpBounds->Places()[k];
      if (IsLineEnd(*at)) return none;
      if (*at != quote) continue;
      if (at[1] == quote) {
        isDoubled = true;
        ++k;
        continue;
      }
      field = std::string_view(first, static_cast<std::size_t>(at - first));
      if (isDoubled) TakeOutDoubles(field);
      return IsLineEnd(at[1]) || at[1] == fpPromise->fDelimiter ? k + 1 : none;
    }
    return none;
  }

  void TakeOutDoubles(std::string_view& field) {
    fUnquoted.clear();
    for (std::size_t i = 0; i < field.size(); ++i) {
      fUnquoted += field[i];
      if (field[i] == fpPromise->fQuote) ++i;
    }
    const std::size_t size = fUnquoted.size();
    fUnquoted.append(kBehind, '\0');
    field = std::string_view(fUnquoted).substr(0, size);
  }

  arrow::Status Take(Column& column, std::string_view field) {
    if (column.fReading == Reading::kSkipped) return arrow::Status::OK();
    if (fpDecoder->IsNull(field)) return column.fCells.SetNull(fRow);
    switch (column.fReading) {
      case Reading::kNumbers:
      case Reading::kWholeNumbers:
        return TakeNumber(column, field);
      case Reading::kWords:
        column.fCells.AddWord(fRow, field);
        return arrow::Status::OK();
      case Reading::kTexts:
        column.fCells.AddText(field);
        return arrow::Status::OK();
      default:
        return NotAsPromised();
    }
  }

  arrow::Status TakeNumber(const Column& column, std::string_view field) const {
    double& value = column.fpNumbers[fRow];
    const char point = fpPromise->fDecimal;
    if (!ReadShortDecimal(field.data(), field.size(), point, value) &&
        !ReadNumber(field, point, value)) {
      return NotAsPromised();
    }
    const bool isRight = column.fReading == Reading::kNumbers || value == std::floor(value);
    return isRight ? arrow::Status::OK() : NotAsPromised();
  }

  const CsvDecoder* fpDecoder;
  const CsvPromise* fpPromise;
  std::string_view fText;
  const CsvBounds* fpBounds;
  std::vector<Column> fColumns;  // of the file
  std::size_t fRow = 0;
  std::string fUnquoted;
};

CsvDecoder::CsvDecoder(CsvPromise promise) : fPromise(std::move(promise)) {
  fReadings.resize(fPromise.fnColumns, Reading::kSkipped);
  for (std::size_t j = 0; j < fPromise.fPlaces.size(); ++j) {
    const arrow::Type::type type = fPromise.fpSchema->field(static_cast<int>(j))->type()->id();
    Reading& reading = fReadings[static_cast<std::size_t>(fPromise.fPlaces[j])];
    if (type == arrow::Type::DOUBLE) {
      reading = fPromise.fWhole[j] ? Reading::kWholeNumbers : Reading::kNumbers;
    } else if (type == arrow::Type::DICTIONARY) {
      reading = Reading::kWords;
    } else {
      reading = type == arrow::Type::NA ? Reading::kNothing : Reading::kTexts;
    }
  }
  for (const std::string& token : fPromise.fNullTokens) {
    std::string readable = token + std::string(kBehind, '\0');
    double value = 0.0;
    fbEmptyIsNull |= token.empty();
    fbNumberIsNull |= ReadShortDecimal(readable.data(), token.size(), fPromise.fDecimal, value);
    if (!token.empty()) fStartsNull[static_cast<unsigned char>(token[0])] = true;
  }
}

bool CsvDecoder::IsNull(std::string_view text) const {
  if (text.empty()) return fbEmptyIsNull;
  if (!fStartsNull[static_cast<unsigned char>(text[0])]) return false;
  const auto& tokens = fPromise.fNullTokens;
  return std::find(tokens.begin(), tokens.end(), text) != tokens.end();
}

arrow::Result<std::shared_ptr<arrow::RecordBatch>> CsvDecoder::Decode(std::string_view text,
                                                                      CsvBounds& bounds) const {
  bounds.Find(text, fPromise.fDelimiter, fPromise.fQuote);
  if (bounds.HasZero() || (bounds.HasHigh() && !IsUtf8(text))) return NotAsPromised();
  ARROW_ASSIGN_OR_RAISE(auto read, Lines(*this, text, bounds).Read());
  ARROW_ASSIGN_OR_RAISE(auto batch, fPromise.fTexts.Turn(std::move(read)));
  if (!AreTurnedRight(*batch)) return NotAsPromised();
  return batch;
}

// The same of numbers that were texts first.
bool CsvDecoder::AreTurnedRight(const arrow::RecordBatch& batch) const {
  for (int j = 0; j < batch.num_columns(); ++j) {
    const bool wasText = fPromise.fpSchema->field(j)->type()->id() == arrow::Type::STRING;
    if (!wasText || batch.column(j)->type_id() != arrow::Type::DOUBLE) continue;
    const auto& numbers = static_cast<const arrow::DoubleArray&>(*batch.column(j));
    const bool isWhole = fPromise.fWhole[static_cast<std::size_t>(j)];
    for (std::int64_t i = 0; i < numbers.length(); ++i) {
      const double value = numbers.Value(i);
      if (numbers.IsNull(i)) continue;
      if (IsLarge(value) || (isWhole && value != std::floor(value))) return false;
    }
  }
  return true;
}

arrow::Status CsvDecoder::NotAsPromised() {
  return arrow::Status::Invalid("the data are not what their start promises");
}

}  // namespace MCHost
