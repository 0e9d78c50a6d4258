#include "host/arrow/RecordWriter.h"

#include <arrow/array.h>
#include <arrow/extension_type.h>
#include <arrow/record_batch.h>
#include <arrow/type.h>
#include <arrow/type_traits.h>

#include <cctype>
#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <string_view>
#include <vector>

#include "host/arrow/CsvCells.h"
#include "host/arrow/SavedBatches.h"
#include "host/arrow/TextFile.h"
#include "host/text/VisibleText.h"

namespace MCHost {

namespace {

enum class Kind { kNumber, kBoolean, kText };

struct Field {
  std::string fName;  // in the form of the file
  Kind fKind;
};

Kind KindOf(const arrow::DataType& type) {
  if (type.id() == arrow::Type::EXTENSION) {
    return KindOf(*static_cast<const arrow::ExtensionType&>(type).storage_type());
  }
  if (type.id() == arrow::Type::DICTIONARY) {
    return KindOf(*static_cast<const arrow::DictionaryType&>(type).value_type());
  }
  if (type.id() == arrow::Type::BOOL) return Kind::kBoolean;
  const bool isNumber = arrow::is_integer(type.id()) || arrow::is_floating(type.id()) ||
                        arrow::is_decimal(type.id()) || type.id() == arrow::Type::DURATION;
  return isNumber ? Kind::kNumber : Kind::kText;
}

std::string Quoted(std::string_view text) {
  using Json = nlohmann::json;
  return Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::vector<Field> FieldsOf(const arrow::Schema& schema, FileFormat format) {
  std::vector<Field> fields;
  for (const auto& field : schema.fields()) {
    const bool isJson = format == FileFormat::kJsonLines;
    fields.push_back(
        {isJson ? Quoted(field->name()) : MarkdownText(field->name()), KindOf(*field->type())});
  }
  return fields;
}

// Neither NaN nor an infinity.
bool IsFinite(std::string_view number) {
  return !number.empty() && std::isdigit(static_cast<unsigned char>(number.back())) != 0;
}

std::string JsonCell(std::string_view cell, Kind kind, bool isNull) {
  if (isNull || (kind == Kind::kNumber && !IsFinite(cell))) return "null";
  return kind == Kind::kText ? Quoted(cell) : std::string(cell);
}

bool IsNull(const arrow::Array& cells, std::int64_t at) {
  if (cells.IsNull(at)) return true;
  if (cells.type_id() != arrow::Type::DICTIONARY) return false;
  const auto& codes = static_cast<const arrow::DictionaryArray&>(cells);
  return codes.dictionary()->IsNull(codes.GetValueIndex(at));
}

void AppendJson(std::string& text, const std::vector<Field>& fields,
                const arrow::RecordBatch& batch, const CsvCells& cells, std::int64_t at) {
  for (std::size_t j = 0; j < fields.size(); ++j) {
    text += (j == 0 ? "{" : ",") + fields[j].fName + ":";
    text += JsonCell(cells.Cell(at, j), fields[j].fKind,
                     IsNull(*batch.column(static_cast<int>(j)), at));
  }
  text += "}\n";
}

void AppendMarkdown(std::string& text, const std::vector<Field>& fields, const CsvCells& cells,
                    std::int64_t at) {
  text += '|';
  for (std::size_t j = 0; j < fields.size(); ++j) {
    text += " " + MarkdownText(cells.Cell(at, j)) + " |";
  }
  text += '\n';
}

std::string MarkdownHead(const std::vector<Field>& fields) {
  std::string names = "|";
  std::string rule = "|";
  for (const Field& field : fields) {
    names += " " + field.fName + " |";
    rule += field.fKind == Kind::kNumber ? " ---: |" : " --- |";
  }
  return names + "\n" + rule + "\n";
}

}  // namespace

void WriteRecordLines(SavedBatches& batches, const std::string& path, FileFormat format) {
  const std::vector<Field> fields = FieldsOf(*batches.Schema(), format);
  const bool isJson = format == FileFormat::kJsonLines;
  TextFile file(path);
  std::string& text = file.Text();
  if (!isJson) text += MarkdownHead(fields);
  CsvCells cells(0, path);
  while (const auto batch = batches.Next()) {
    cells.Format(*batch);
    for (std::int64_t i = 0; i < batch->num_rows(); ++i) {
      isJson ? AppendJson(text, fields, *batch, cells, i) : AppendMarkdown(text, fields, cells, i);
      file.Pass();
    }
  }
  file.Finish();
}

}  // namespace MCHost
