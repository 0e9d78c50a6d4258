#include "host/cases/UACaseValueReader.h"

#include "host/cases/KOVA_InputCaseIterator.h"

UACaseValueReader::UACaseValueReader(KOVA_InputCaseIterator* iterator, int var,
                                     bool includeUserMissing)
    : fpIterator(iterator), fVar(var), fbIncludeUserMissing(includeUserMissing) {}

CaseValue UACaseValueReader::GetValue() const {
  if (fpIterator->GetVariable(fVar).IsNumeric()) {
    return {KOVA_Value(fpIterator->GetNumericValue(fVar)), IsMissing()};
  }
  const std::string* text = fpIterator->GetStringValue(fVar);
  return {KOVA_Value(text == nullptr ? std::string() : *text), IsMissing()};
}

bool UACaseValueReader::IsMissing() const {
  const KOVA_Variable& variable = fpIterator->GetVariable(fVar);
  const auto isExcluded = [&](const auto& value) {
    return !fbIncludeUserMissing && variable.GetMissingValues().Contains(value);
  };
  if (variable.IsNumeric()) {
    const double number = fpIterator->GetNumericValue(fVar);
    return number == KOVA_SystemMissing || isExcluded(number);
  }
  const std::string* text = fpIterator->GetStringValue(fVar);
  return text == nullptr || isExcluded(*text);
}

bool UACaseValueReader::IsSysmis() const {
  return fpIterator->GetVariable(fVar).IsNumeric() &&
         fpIterator->GetNumericValue(fVar) == KOVA_SystemMissing;
}
