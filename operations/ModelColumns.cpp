#include "operations/ModelColumns.h"

#include "common/MissingValue.h"
#include "common/xml/XMLString.h"
#include "host/data/KOVA_Variable.h"
#include "host/text/KeywordMatch.h"
#include "naivebayes/encoders/NBCatNumEncoder.h"
#include "naivebayes/encoders/NBStringEncoder.h"
#include "operations/RequestError.h"

namespace PredSelect {

namespace {

constexpr int kNotLookedUp = -2;

int FindColumn(const MCHost::ITable& table, const std::string& name) {
  std::vector<std::string> names;
  for (int i = 0; i < table.ColumnCount(); ++i) {
    names.push_back(table.GetVariable(i).GetName());
    if (names.back() == name) return i;
  }
  const std::string nearest = MCHost::NearestWord(name, names);
  throw RequestError("the data have no variable \"" + name + "\", which the model needs" +
                     (nearest.empty() ? "." : "; did you mean \"" + nearest + "\"?"));
}

}  // namespace

std::string CategoryText(const INBVariable& variable, int code) {
  if (const auto* strings = dynamic_cast<const NBStringEncoder*>(variable.GetEncoder())) {
    const std::string* text = strings->Decode(code);
    return text == nullptr ? std::to_string(code) : *text;
  }
  const double number = CategoryNumber(variable, code);
  if (MCMV::IsMissing(number)) return std::to_string(code);
  return MCCommonXML::XMLString::Create(number).Escaped(MCCommonXML::XMLString::Place::kText,
                                                        MCCommonXML::XMLString::Encoding::kUTF8);
}

double CategoryNumber(const INBVariable& variable, int code) {
  const auto* numbers = dynamic_cast<const NBCatNumEncoder*>(variable.GetEncoder());
  return numbers == nullptr ? KOVA_SystemMissing : numbers->Decode(code);
}

ModelColumns::ModelColumns(const NBVarList& variables, const MCHost::ITable& table) {
  for (int position = 0; position < variables.Size(); ++position) {
    const INBVariable& variable = *variables.GetVarAt(position);
    if (variable.GetVariableRole() != INBVariable::kInput) continue;
    const int at = FindColumn(table, variable.GetVariableName());
    const KOVA_Variable& found = table.GetVariable(at);
    const bool isString = variable.GetMeasureLevel() == INBVariable::kStringCategorical;
    Column column;
    if (isString == found.IsNumeric()) {
      column.fRefusal = "\"" + found.GetName() + "\" holds " +
                        (found.IsNumeric() ? "numbers" : "texts") +
                        ", but the model was built on " + (isString ? "texts." : "numbers.");
    }
    column.fPosition = position;
    column.fbCategorical = variable.GetMeasureLevel() != INBVariable::kContinuous;
    for (int code = 0; column.fbCategorical && code < variable.GetNumberOfCategories(); ++code) {
      if (isString) {
        column.fStringCodes.emplace(CategoryText(variable, code), code);
      } else {
        column.fNumberCodes.emplace(CategoryNumber(variable, code), code);
      }
    }
    fTableColumns.push_back(at);
    fColumns.push_back(std::move(column));
  }
}

void ModelColumns::FillRecord(const MCHost::TableBatch& batch, std::size_t i,
                              MCCommon::Record& record) {
  for (std::size_t j = 0; j < record.Size(); ++j) record[j] = KOVA_SystemMissing;
  for (std::size_t j = 0; j < fColumns.size(); ++j) {
    const auto position = static_cast<std::size_t>(fColumns[j].fPosition);
    record[position] = ValueOf(fColumns[j], batch.fColumns[j], i);
  }
}

double ModelColumns::ValueOf(Column& column, const MCHost::ColumnView& view, std::size_t i) const {
  int code = -1;
  const bool isMissing =
      view.fpNumbers != nullptr ? MCMV::IsMissing(view.fpNumbers[i]) : view.fpCodes[i] < 0;
  if (isMissing) return KOVA_SystemMissing;
  if (!column.fRefusal.empty()) throw RequestError(column.fRefusal);
  if (view.fpNumbers != nullptr) {
    const double value = view.fpNumbers[i];
    if (!column.fbCategorical) return value;
    const auto found = column.fNumberCodes.find(value);
    if (found != column.fNumberCodes.end()) code = found->second;
  } else {
    code = CodeOfString(column, *view.fpDictionary, view.fpCodes[i]);
  }
  return code < 0 ? KOVA_SystemMissing : code;
}

int ModelColumns::CodeOfString(Column& column, const MCHost::StringDictionary& dictionary,
                               std::int32_t code) {
  const auto place = static_cast<std::size_t>(code);
  if (place >= column.fCodes.size()) column.fCodes.resize(place + 1, kNotLookedUp);
  int& known = column.fCodes[place];
  if (known != kNotLookedUp) return known;
  const std::string& text = dictionary.At(code);
  const auto found = column.fStringCodes.find(text);
  known = found == column.fStringCodes.end() ? -1 : found->second;
  return known;
}

}  // namespace PredSelect
