#include "host/output/render/FlatRecords.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string_view>
#include <variant>
#include <vector>

#include "common/MissingValue.h"
#include "host/data/ArrowCDataInterface.h"
#include "host/data/ArrowStreamWriter.h"
#include "host/data/MemoryTable.h"
#include "host/output/OutputFormat.h"
#include "host/output/render/TableRecords.h"
#include "host/text/VisibleText.h"

namespace MCHost {

namespace {

// A number, a text, or nothing.
using Cell = std::variant<std::monostate, double, std::string_view>;

constexpr double kExactWhole = 9007199254740992.0;  // 2^53

// "Test: Value" is "test_value".
std::string PlainName(const std::string& name) {
  std::string plain;
  for (const char c : name) {
    const bool isUpper = c >= 'A' && c <= 'Z';
    const bool isKept = isUpper || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || (c & 0x80);
    if (isKept) {
      plain += isUpper ? static_cast<char>(c - 'A' + 'a') : c;
    } else if (!plain.empty() && plain.back() != '_') {
      plain += '_';
    }
  }
  return plain;
}

Cell CellOf(const ColumnView& column, std::size_t i) {
  if (column.fpNumbers != nullptr) {
    const double number = column.fpNumbers[i];
    return MCMV::IsMissing(number) ? Cell() : Cell(number);
  }
  const std::int32_t code = column.fpCodes[i];
  return code < 0 ? Cell() : Cell(std::string_view(column.fpDictionary->At(code)));
}

std::string Digits(double number) {
  char text[32];
  return {text, std::to_chars(text, text + sizeof(text), number).ptr};
}

// Writes the lines of one form.
class IRecordLines {
 public:
  virtual ~IRecordLines() = default;
  virtual std::string Head(const ITable& records) = 0;
  virtual std::string Line(const std::vector<Cell>& cells) const = 0;
};

class Delimited : public IRecordLines {
 public:
  explicit Delimited(char delimiter) : fDelimiter(delimiter) {}

  std::string Head(const ITable& records) override {
    std::vector<Cell> names;
    for (int i = 0; i < records.ColumnCount(); ++i) {
      names.emplace_back(std::string_view(records.GetVariable(i).GetName()));
    }
    return Line(names);
  }

  std::string Line(const std::vector<Cell>& cells) const override {
    std::string line;
    for (const Cell& cell : cells) {
      if (&cell != &cells.front()) line += fDelimiter;
      if (const auto* number = std::get_if<double>(&cell)) line += Digits(*number);
      if (const auto* text = std::get_if<std::string_view>(&cell)) line += Quoted(*text);
    }
    return line + "\n";
  }

 private:
  std::string Quoted(std::string_view text) const {
    const std::string special = std::string("\"\r\n") + fDelimiter;
    if (!text.empty() && text.find_first_of(special) == std::string_view::npos) {
      return std::string(text);
    }
    std::string quoted = "\"";
    for (const char c : text) quoted.append(c == '"' ? 2 : 1, c);
    return quoted + "\"";
  }

  char fDelimiter;
};

class JsonLines : public IRecordLines {
 public:
  std::string Head(const ITable& records) override {
    fNames.clear();
    for (int i = 0; i < records.ColumnCount(); ++i) {
      fNames.push_back(records.GetVariable(i).GetName());
    }
    return "";
  }

  std::string Line(const std::vector<Cell>& cells) const override {
    nlohmann::ordered_json record;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      auto& value = record[fNames[i]];
      if (const auto* text = std::get_if<std::string_view>(&cells[i])) value = *text;
      if (const auto* number = std::get_if<double>(&cells[i])) {
        const bool isWhole = std::fabs(*number) < kExactWhole && *number == std::floor(*number);
        if (isWhole) {
          value = static_cast<std::int64_t>(*number);
        } else {
          value = *number;
        }
      }
    }
    return record.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
  }

 private:
  std::vector<std::string> fNames;
};

class Markdown : public IRecordLines {
 public:
  std::string Head(const ITable& records) override {
    std::string names = "|";
    std::string rule = "|";
    for (int i = 0; i < records.ColumnCount(); ++i) {
      names += " " + Escaped(records.GetVariable(i).GetName()) + " |";
      rule += records.GetVariable(i).IsNumeric() ? " ---: |" : " --- |";
    }
    return names + "\n" + rule + "\n";
  }

  std::string Line(const std::vector<Cell>& cells) const override {
    std::string line = "|";
    for (const Cell& cell : cells) {
      line += ' ';
      if (const auto* number = std::get_if<double>(&cell)) {
        line += FormatNumber(*number, OutputFormat::kCoefficient);
      }
      if (const auto* text = std::get_if<std::string_view>(&cell)) line += Escaped(*text);
      line += " |";
    }
    return line + "\n";
  }

 private:
  // A page to read, unlike the other forms: what would steer a terminal is made visible.
  static std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char c : VisibleText(text, "\n\r\t")) {
      if (c == '|') escaped += '\\';
      escaped += c == '\n' || c == '\r' ? ' ' : c;
    }
    return escaped;
  }
};

std::unique_ptr<IRecordLines> LinesOf(RecordsForm form) {
  if (form == RecordsForm::kJsonLines) return std::make_unique<JsonLines>();
  if (form == RecordsForm::kMarkdown) return std::make_unique<Markdown>();
  return std::make_unique<Delimited>(form == RecordsForm::kCsv ? ',' : '\t');
}

}  // namespace

std::unique_ptr<MemoryTable> FlatRecords(const OutputTable& table) {
  ArrowArrayStream stream{};
  WriteArrowStream(std::make_unique<TableRecords>(table), &stream);
  auto records = std::make_unique<MemoryTable>(&stream);
  for (int i = 0; i < records->ColumnCount(); ++i) {
    KOVA_Variable& variable = records->GetVariable(i);
    variable.SetName(PlainName(variable.GetName()));
  }
  return records;
}

std::string RenderRecords(ITable& records, RecordsForm form) {
  const std::unique_ptr<IRecordLines> lines = LinesOf(form);
  std::vector<int> columns;
  for (int i = 0; i < records.ColumnCount(); ++i) columns.push_back(i);
  std::string text = lines->Head(records);
  const std::unique_ptr<ITableScan> scan = records.Scan(columns);
  while (const TableBatch* batch = scan->Next()) {
    for (std::size_t i = 0; i < batch->fNCases; ++i) {
      std::vector<Cell> cells;
      for (const ColumnView& column : batch->fColumns) cells.push_back(CellOf(column, i));
      text += lines->Line(cells);
    }
  }
  return text;
}

}  // namespace MCHost
