#include "host/arrow/CsvHeader.h"

#include <algorithm>
#include <charconv>
#include <set>

#include "host/arrow/CsvKinds.h"
#include "host/arrow/CsvNumbers.h"
#include "host/arrow/CsvSample.h"

namespace MCHost {

namespace {

using Row = std::vector<std::string>;

bool IsWhole(const std::string& text) {
  const bool isDigits =
      std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
  return isDigits && !text.empty() && text.size() < 18;
}

bool IsNumber(const std::string& text) {
  const auto plain = PlainNumberOf(text, {',', kNoMark});
  return (CsvKindsOf(text) & kCsvNumber) != 0 ||
         (plain && (CsvKindsOf(plain->fText) & kCsvNumber) != 0);
}

bool HasDigit(const std::string& text) {
  return text.find_first_of("0123456789") != std::string::npos;
}

// What the rows below the first have in a column.
struct Below {
  bool fbTyped = true;
  bool fbEmpty = true;
  bool fbRepeatsFirst = false;
};

Below LookBelow(const std::vector<Row>& rows, std::size_t column) {
  Below below;
  for (std::size_t i = 1; i < rows.size(); ++i) {
    if (column >= rows[i].size() || rows[i][column].empty()) continue;
    below.fbEmpty = false;
    below.fbTyped &= IsTypedCell(rows[i][column]);
    below.fbRepeatsFirst |= rows[i][column] == rows[0][column];
  }
  return below;
}

bool Ascend(const Row& numbers) {
  const auto value = [](const std::string& text) {
    long long number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
  };
  return std::adjacent_find(numbers.begin(), numbers.end(),
                            [&](const std::string& a, const std::string& b) {
                              return value(a) >= value(b);
                            }) == numbers.end();
}

// Whether a row can hardly be one of names, whatever is below it.
bool IsHardlyNames(const Row& row) {
  const auto isOdd = [](const std::string& text) {
    return text.empty() || (IsNumber(text) && HasDigit(text) && !IsWhole(text));
  };
  const bool isRepeated = std::set<std::string>(row.begin(), row.end()).size() < row.size();
  const bool areWhole = std::all_of(row.begin(), row.end(), IsWhole);
  return isRepeated || std::any_of(row.begin(), row.end(), isOdd) || (areWhole && !Ascend(row));
}

}  // namespace

bool IsTypedCell(const std::string& text) {
  return text.empty() || CsvKindsOf(text) != kCsvText || IsNumber(text);
}

CsvHeader HeaderOf(const CsvSample& sample) {
  const std::vector<Row>& rows = sample.Rows();
  if (rows.size() < 2) return CsvHeader::kNames;
  const Row& first = rows[0];
  bool isAnyTyped = false;
  bool isRepeated = false;
  for (std::size_t j = 0; j < first.size(); ++j) {
    const Below below = LookBelow(rows, j);
    const bool isTyped = IsTypedCell(first[j]);
    if (below.fbTyped && !below.fbEmpty && !isTyped) return CsvHeader::kNames;
    isAnyTyped |= below.fbTyped && !below.fbEmpty && !first[j].empty();
    isRepeated |= !isTyped && below.fbRepeatsFirst;
  }
  if (!isAnyTyped) return CsvHeader::kNames;
  if (isRepeated || IsHardlyNames(first)) return CsvHeader::kData;
  const bool areWhole = std::all_of(first.begin(), first.end(), IsWhole);
  return areWhole ? CsvHeader::kPerhapsNames : CsvHeader::kNames;
}

}  // namespace MCHost
