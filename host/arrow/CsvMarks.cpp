#include "host/arrow/CsvMarks.h"

#include <algorithm>
#include <optional>

#include "host/arrow/CsvKinds.h"
#include "host/arrow/CsvSample.h"

namespace MCHost {

namespace {

// The likelier before others that make the same columns numbers.
constexpr CsvNumbers kKnown[] = {{'.', kNoMark}, {',', kNoMark},   {'.', ','},
                                 {',', '.'},     {'.', kAnySpace}, {',', kAnySpace},
                                 {'.', '\''},    {',', '\''},      {'.', '_'}};

bool IsSaid(const CsvNumbers& marks, const ReadingOptions& said) {
  return said.fDecimal.value_or(marks.fDecimal) == marks.fDecimal &&
         said.fThousands.value_or(marks.fThousands) == marks.fThousands;
}

// What a column looks like when its numbers have certain marks.
struct Reading {
  bool fbNumbers = false;
  std::string fMarked;  // its first number that is none without marks
};

Reading ReadColumn(const CsvSample& sample, std::size_t firstRow, std::size_t column,
                   const CsvNumbers& marks) {
  Reading reading;
  std::size_t shortest = kCsvLongestOther;
  std::size_t longest = 0;
  bool isGrouped = false;
  for (std::size_t i = firstRow; i < sample.Rows().size(); ++i) {
    const auto& row = sample.Rows()[i];
    if (column >= row.size() || row[column].empty()) continue;
    if (row[column].size() > kCsvLongestOther) return {};
    const auto number = PlainNumberOf(row[column], marks);
    if (!number || (CsvKindsOf(number->fText) & kCsvNumber) == 0) return {};
    reading.fbNumbers = true;
    isGrouped |= number->fbGrouped;
    shortest = std::min(shortest, number->fText.size());
    longest = std::max(longest, number->fText.size());
    if (reading.fMarked.empty() && (CsvKindsOf(row[column]) & kCsvNumber) == 0) {
      reading.fMarked = row[column];
    }
  }
  // Codes and telephone numbers are in groups, too, but of one length.
  const bool isCode =
      isGrouped && shortest == longest && marks.fThousands != ',' && marks.fThousands != '.';
  return isCode ? Reading() : reading;
}

std::vector<Reading> ReadColumns(const CsvSample& sample, std::size_t firstRow,
                                 const CsvNumbers& marks) {
  std::vector<Reading> columns;
  for (std::size_t j = 0; j < sample.Width(); ++j) {
    columns.push_back(ReadColumn(sample, firstRow, j, marks));
  }
  return columns;
}

std::size_t CountNumbers(const std::vector<Reading>& columns) {
  return static_cast<std::size_t>(std::count_if(
      columns.begin(), columns.end(), [](const Reading& column) { return column.fbNumbers; }));
}

// Whether every column of numbers stays one.
bool Keeps(const std::vector<Reading>& columns, const std::vector<Reading>& plain) {
  return std::equal(
      plain.begin(), plain.end(), columns.begin(), columns.end(),
      [](const Reading& before, const Reading& now) { return now.fbNumbers || !before.fbNumbers; });
}

}  // namespace

CsvMarks MarksOf(const CsvSample& sample, std::size_t firstRow, const ReadingOptions& said) {
  CsvMarks best;
  if (said.fDecimal) best.fNumbers.fDecimal = *said.fDecimal;
  if (said.fThousands) best.fNumbers.fThousands = *said.fThousands;
  if (said.fDecimal && said.fThousands) return best;
  const std::vector<Reading> plain = ReadColumns(sample, firstRow, best.fNumbers);
  std::size_t most = CountNumbers(plain);
  if (most == sample.Width()) return best;
  for (const CsvNumbers& marks : kKnown) {
    if (!IsSaid(marks, said)) continue;
    const std::vector<Reading> columns = ReadColumns(sample, firstRow, marks);
    const std::size_t n = CountNumbers(columns);
    const bool isOtherComma =
        marks == CsvNumbers{'.', ','} && best.fNumbers == CsvNumbers{',', kNoMark} && n == most;
    if (isOtherComma && !said.fDecimal && Keeps(columns, plain)) {
      const auto marked = std::find_if(columns.begin(), columns.end(), [](const Reading& column) {
        return !column.fMarked.empty();
      });
      best.fUnsure = marked->fMarked;
    }
    if (n <= most || !Keeps(columns, plain)) continue;
    most = n;
    best = {marks, ""};
  }
  if (!best.fUnsure.empty()) best.fNumbers = CsvNumbers{};
  return best;
}

}  // namespace MCHost
