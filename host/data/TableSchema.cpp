#include "host/data/TableSchema.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <set>
#include <utility>

#include "host/data/ITable.h"
#include "host/data/MissingValueCode.h"
#include "host/data/NullWords.h"
#include "host/data/TableSchemaReader.h"
#include "host/session/HostIOError.h"
#include "host/text/KeywordMatch.h"

namespace MCHost {

namespace {

std::optional<double> NumberOf(const TableSchema::Item& item) {
  return item.fpNumber ? item.fpNumber : CodeAsNumber(item.fText);
}

bool MayBeText(const TableSchema::Field& field) {
  return field.fType == FieldType::kAny || field.fType == FieldType::kString;
}

// Whether a text of a numeric field stands for nothing where its cells are read: so does any one
// without digits where the field's type says that texts are no values of it.
bool IsNullText(const TableSchema::Field& field, const std::string& text) {
  const bool hasDigits = text.find_first_of("0123456789") != std::string::npos;
  return text.empty() || IsNullWord(text) || (!MayBeText(field) && !hasDigits);
}

// Puts one field's properties into its variable.
class FieldApplier {
 public:
  FieldApplier(std::string document, KOVA_Variable& variable)
      : fDocument(std::move(document)), fpVariable(&variable) {}

  void Apply(const TableSchema::Field& field) {
    CheckType(field);
    if (!field.fTitle.empty()) fpVariable->SetLabel(field.fTitle);
    if (field.fpMissing) AddMissing(field);
    for (const auto& item : field.fCategories) AddLabel(item);
    if (!field.fbCategories) return;
    fpVariable->SetMeasurementLevel(field.fbOrdered ? KOVA_Variable::kOrdinal
                                                    : KOVA_Variable::kNominal);
  }

  void AddMissing(const TableSchema::Field& field) {
    for (const auto& item : *field.fpMissing) {
      if (!fpVariable->IsNumeric()) {
        fpVariable->GetMissingValues().AddString(item.fText);
      } else if (item.fpNumber || !IsNullText(field, item.fText)) {
        AddNumericMissing(item);
      } else {
        continue;
      }
      if (!item.fLabel.empty()) AddLabel(item);
    }
  }

  // Document-wide values: what does not fit the variable does not concern it.
  void AddCommonMissing(const std::vector<TableSchema::Item>& items) {
    for (const auto& item : items) {
      if (!fpVariable->IsNumeric()) {
        fpVariable->GetMissingValues().AddString(item.fText);
      } else if (const auto number = NumberOf(item)) {
        fpVariable->GetMissingValues().AddNumber(*number);
      } else {
        continue;
      }
      if (!item.fLabel.empty()) AddLabel(item);
    }
  }

 private:
  void CheckType(const TableSchema::Field& field) {
    if (field.fType == FieldType::kAny) return;
    const bool text = field.fType == FieldType::kString;
    if (text != fpVariable->IsNumeric()) return;
    Fail(field.fPath + ".type", fmt::format("column \"{}\" holds {}, not what the type says",
                                            field.fName, text ? "numbers" : "text"));
  }

  void AddNumericMissing(const TableSchema::Item& item) {
    KOVA_MissingValues& missing = fpVariable->GetMissingValues();
    if (const auto number = NumberOf(item)) return missing.AddNumber(*number);
    const auto range = CodeAsRange(item.fText);
    if (!range) {
      Fail(item.fPath, fmt::format("\"{}\" is neither a number nor a range \"low..high\", as a "
                                   "numeric column needs it",
                                   item.fText));
    }
    if (missing.HasRange()) Fail(item.fPath, "a column can have one range of missing values only");
    missing.SetRange(range->fLow, range->fHigh);
  }

  void AddLabel(const TableSchema::Item& item) {
    KOVA_ValueLabelMap& labels = fpVariable->GetValueLabels();
    if (!fpVariable->IsNumeric()) {
      if (!item.fLabel.empty()) labels.SetLabel(item.fText, item.fLabel);
      return;
    }
    const auto number = NumberOf(item);
    if (!number && CodeAsRange(item.fText)) return;  // a range has no label of its own
    if (!number) Fail(item.fPath, fmt::format("\"{}\" is not a number", item.fText));
    if (!item.fLabel.empty()) labels.SetLabel(*number, item.fLabel);
  }

  [[noreturn]] void Fail(const std::string& place, const std::string& reason) const {
    throw HostIOError(fDocument, place, reason);
  }

  std::string fDocument;
  KOVA_Variable* fpVariable;
};

}  // namespace

TableSchema TableSchema::Read(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string text(std::istreambuf_iterator<char>(file), {});
  if (!file.is_open() || file.bad()) {
    throw HostIOError(path, "", fmt::format("cannot be read: {}", std::strerror(errno)));
  }
  return Parse(text, path);
}

TableSchema TableSchema::Parse(const std::string& text, const std::string& name) {
  TableSchema schema;
  schema.fName = name;
  TableSchemaReader reader(text, name);
  schema.fFields = reader.Fields();
  schema.fMissing = reader.MissingValues();
  return schema;
}

std::map<std::string, FieldType> TableSchema::Types() const {
  std::map<std::string, FieldType> types;
  for (const Field& field : fFields) {
    if (field.fType != FieldType::kAny) types[field.fName] = field.fType;
  }
  return types;
}

std::vector<std::string> TableSchema::NullTokens() const {
  std::vector<std::string> tokens;
  for (const Item& item : fMissing) {
    if (!NumberOf(item)) tokens.push_back(item.fText);
  }
  return tokens;
}

std::map<std::string, std::vector<std::string>> TableSchema::ColumnNulls() const {
  std::map<std::string, std::vector<std::string>> nulls;
  for (const Field& field : fFields) {
    if (MayBeText(field) || !field.fpMissing) continue;
    for (const Item& item : *field.fpMissing) {
      if (!item.fpNumber && IsNullText(field, item.fText)) {
        nulls[field.fName].push_back(item.fText);
      }
    }
  }
  return nulls;
}

void TableSchema::Apply(ITable& table) const {
  std::map<std::string, int> columns;
  std::vector<std::string> names;
  for (int i = 0; i < table.ColumnCount(); ++i) {
    names.push_back(table.GetVariable(i).GetName());
    columns[names.back()] = i;
  }
  std::set<int> ownMissing;
  for (const Field& field : fFields) {
    const auto found = columns.find(field.fName);
    if (found == columns.end()) {
      throw HostIOError(fName, field.fPath + ".name",
                        fmt::format("the data have no column \"{}\"", field.fName) +
                            DidYouMean(field.fName, names));
    }
    FieldApplier(fName, table.GetVariable(found->second)).Apply(field);
    if (field.fpMissing) ownMissing.insert(found->second);
  }
  for (int i = 0; i < table.ColumnCount(); ++i) {
    if (ownMissing.count(i) > 0) continue;
    FieldApplier(fName, table.GetVariable(i)).AddCommonMissing(fMissing);
  }
}

}  // namespace MCHost
