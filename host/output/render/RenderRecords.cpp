#include "host/output/render/RenderRecords.h"

#include <cmath>
#include <cstdint>
#include <nlohmann/json.hpp>

#include "common/MissingValue.h"
#include "host/output/FlatRecords.h"
#include "host/output/OutputFormat.h"
#include "host/text/CsvText.h"
#include "host/text/VisibleText.h"

namespace MCHost {

namespace {

bool IsMissing(const FlatColumn& column, std::size_t record) {
  return column.fbNumeric ? MCMV::IsMissing(column.fNumbers[record]) : !column.fTexts[record];
}

std::string Delimited(const FlatRecords& records, char delimiter) {
  std::string text;
  for (const FlatColumn& column : records.fColumns) {
    if (&column != &records.fColumns.front()) text += delimiter;
    AppendCsvText(text, column.fName, delimiter);
  }
  text += '\n';
  for (std::size_t i = 0; i < records.Size(); ++i) {
    for (const FlatColumn& column : records.fColumns) {
      if (&column != &records.fColumns.front()) text += delimiter;
      if (IsMissing(column, i)) continue;
      column.fbNumeric ? AppendNumber(text, column.fNumbers[i])
                       : AppendCsvText(text, *column.fTexts[i], delimiter);
    }
    text += '\n';
  }
  return text;
}

nlohmann::ordered_json JsonCell(const FlatColumn& column, std::size_t record) {
  constexpr double kExactWhole = 9007199254740992.0;  // 2^53
  if (IsMissing(column, record)) return nullptr;
  if (!column.fbNumeric) return *column.fTexts[record];
  const double number = column.fNumbers[record];
  const bool isWhole = std::fabs(number) < kExactWhole && number == std::floor(number);
  if (isWhole) return static_cast<std::int64_t>(number);
  return number;
}

std::string JsonLines(const FlatRecords& records) {
  std::string text;
  for (std::size_t i = 0; i < records.Size(); ++i) {
    auto record = nlohmann::ordered_json::object();
    for (const FlatColumn& column : records.fColumns) record[column.fName] = JsonCell(column, i);
    text += record.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
  }
  return text;
}

std::string Markdown(const FlatRecords& records) {
  std::string text = "|";
  std::string rule = "|";
  for (const FlatColumn& column : records.fColumns) {
    text += " " + MarkdownText(column.fName) + " |";
    rule += column.fbNumeric ? " ---: |" : " --- |";
  }
  text += "\n" + rule + "\n";
  for (std::size_t i = 0; i < records.Size(); ++i) {
    text += '|';
    for (const FlatColumn& column : records.fColumns) {
      text += ' ';
      if (column.fbNumeric) {
        text += FormatNumber(column.fNumbers[i], OutputFormat::kCoefficient);
      } else if (column.fTexts[i]) {
        text += MarkdownText(*column.fTexts[i]);
      }
      text += " |";
    }
    text += '\n';
  }
  return text;
}

}  // namespace

std::string RenderRecords(const FlatRecords& records, FileFormat format) {
  if (records.fColumns.empty()) return "";
  if (format == FileFormat::kJsonLines) return JsonLines(records);
  if (format == FileFormat::kMarkdown) return Markdown(records);
  return Delimited(records, DelimiterOf(format));
}

}  // namespace MCHost
