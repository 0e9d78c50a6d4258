#include "host/arrow/CsvWriter.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <string_view>
#include <vector>

#include "common/MissingValue.h"
#include "host/data/ITable.h"
#include "host/session/OutputFile.h"

namespace MCHost {

namespace {

constexpr double kExactIntegers = 9007199254740992.0;  // 2^53
constexpr std::size_t kPieceBytes = std::size_t{1} << 18;

void AppendNumber(std::string& row, double value) {
  if (MCMV::IsMissing(value)) return;
  std::array<char, 32> text;
  const bool whole = std::abs(value) < kExactIntegers && value == std::floor(value);
  const auto end = whole ? std::to_chars(text.data(), text.data() + text.size(),
                                         static_cast<std::int64_t>(value))
                         : std::to_chars(text.data(), text.data() + text.size(), value);
  row.append(text.data(), end.ptr);
}

void AppendText(std::string& row, std::string_view text, char delimiter) {
  const std::array<char, 4> special = {'"', '\r', '\n', delimiter};
  const bool isPlain =
      text.find_first_of({special.data(), special.size()}) == std::string_view::npos;
  // A byte order mark would be skipped at the start of the file.
  if (isPlain && !text.starts_with("\xEF\xBB\xBF")) {
    row += text;
    return;
  }
  row += '"';
  for (const char c : text) row.append(c == '"' ? 2 : 1, c);
  row += '"';
}

void AppendCell(std::string& row, const ColumnView& column, std::size_t at, char delimiter) {
  if (column.fpNumbers != nullptr) return AppendNumber(row, column.fpNumbers[at]);
  const std::int32_t code = column.fpCodes[at];
  if (code >= 0) AppendText(row, column.fpDictionary->At(code), delimiter);
}

void AppendCase(std::string& row, const TableBatch& batch, std::size_t at, char delimiter) {
  const std::size_t start = row.size();
  for (std::size_t j = 0; j < batch.fColumns.size(); ++j) {
    if (j > 0) row += delimiter;
    AppendCell(row, batch.fColumns[j], at, delimiter);
  }
  if (row.size() == start) row += "\"\"";
  row += '\n';
}

std::string Header(const ITable& table, char delimiter) {
  std::string row;
  for (int i = 0; i < table.ColumnCount(); ++i) {
    if (i > 0) row += delimiter;
    AppendText(row, table.GetVariable(i).GetName(), delimiter);
  }
  return row + '\n';
}

}  // namespace

void WriteCsv(ITable& table, const std::string& path, char delimiter) {
  std::vector<int> columns(static_cast<std::size_t>(table.ColumnCount()));
  std::iota(columns.begin(), columns.end(), 0);
  OutputFile file(path);
  std::string rows = Header(table, delimiter);
  const auto scan = table.Scan(columns);
  while (const TableBatch* batch = scan->Next()) {
    for (std::size_t i = 0; i < batch->fNCases; ++i) {
      AppendCase(rows, *batch, i, delimiter);
      if (rows.size() < kPieceBytes) continue;
      file.Write(rows);
      rows.clear();
    }
  }
  file.Write(rows);
  file.Commit();
}

}  // namespace MCHost
