#include "host/data/WholeTable.h"

#include <cstddef>

#include "host/data/KOVA_Variable.h"

namespace MCHost {

namespace {

void AddFormat(std::vector<int>& numbers, const KOVA_Format& format) {
  numbers.insert(numbers.end(), {format.fType, format.fWidth, format.fDecimals});
}

KOVA_Format FormatAt(const std::vector<int>& numbers, std::size_t at) {
  return {numbers[at], numbers[at + 1], numbers[at + 2]};
}

}  // namespace

ColumnDictionary DictionaryOf(const KOVA_Variable& variable) {
  ColumnDictionary dictionary;
  dictionary.fName = variable.GetName();
  dictionary.fLabel = variable.GetLabel();
  dictionary.fType = variable.GetType();
  AddFormat(dictionary.fFormats, variable.GetFormat());
  AddFormat(dictionary.fFormats, variable.GetWriteFormat());
  dictionary.fLevel = variable.GetMeasurementLevel();
  dictionary.fbLevelFound = variable.IsLevelSettled();
  dictionary.fTime = variable.GetTime();
  dictionary.fAlignment = variable.GetAlignment();
  for (const auto& [number, label] : variable.GetValueLabels().Numbers()) {
    dictionary.fLabelled.push_back(number);
    dictionary.fLabels.push_back(label);
  }
  for (const auto& [text, label] : variable.GetValueLabels().Strings()) {
    dictionary.fLabelledTexts.push_back(text);
    dictionary.fLabels.push_back(label);
  }
  const KOVA_MissingValues& missing = variable.GetMissingValues();
  dictionary.fMissing = missing.GetNumbers();
  dictionary.fMissingTexts = missing.GetStrings();
  dictionary.fbMissingRange = missing.HasRange();
  dictionary.fMissingLow = missing.GetLow();
  dictionary.fMissingHigh = missing.GetHigh();
  return dictionary;
}

KOVA_Variable VariableOf(const ColumnDictionary& dictionary) {
  KOVA_Variable variable(dictionary.fName, dictionary.fType);
  variable.SetLabel(dictionary.fLabel);
  variable.SetFormat(FormatAt(dictionary.fFormats, 0));
  variable.SetWriteFormat(FormatAt(dictionary.fFormats, 3));
  const auto level = static_cast<KOVA_Variable::MeasurementLevel>(dictionary.fLevel);
  dictionary.fbLevelFound ? variable.SettleMeasurementLevel(level)
                          : variable.SetMeasurementLevel(level);
  variable.SetTime(static_cast<KOVA_Variable::Time>(dictionary.fTime));
  variable.SetAlignment(static_cast<KOVA_Variable::Alignment>(dictionary.fAlignment));
  const std::size_t nNumbers = dictionary.fLabelled.size();
  for (std::size_t i = 0; i < dictionary.fLabels.size(); ++i) {
    const std::string& label = dictionary.fLabels[i];
    i < nNumbers
        ? variable.GetValueLabels().SetLabel(dictionary.fLabelled[i], label)
        : variable.GetValueLabels().SetLabel(dictionary.fLabelledTexts[i - nNumbers], label);
  }
  KOVA_MissingValues& missing = variable.GetMissingValues();
  for (const double number : dictionary.fMissing) missing.AddNumber(number);
  for (const std::string& text : dictionary.fMissingTexts) missing.AddString(text);
  if (dictionary.fbMissingRange) missing.SetRange(dictionary.fMissingLow, dictionary.fMissingHigh);
  return variable;
}

}  // namespace MCHost
