#include "host/cases/UACaseValueReader.h"

#include "host/cases/KOVA_InputCaseIterator.h"

UACaseValueReader::UACaseValueReader(KOVA_InputCaseIterator* iterator, int var,
                                     bool includeUserMissing)
    : fpIterator(iterator), fVar(var), fbIncludeUserMissing(includeUserMissing) {}

CaseValue UACaseValueReader::GetValue() const {
  const KOVA_Variable& variable = fpIterator->GetVariable(fVar);
  const auto counts = [&](const auto& value) {
    return fbIncludeUserMissing || !variable.GetMissingValues().Contains(value);
  };
  if (!variable.IsNumeric()) {
    const std::string* text = fpIterator->GetStringValue(fVar);
    if (text == nullptr) return {KOVA_Value(std::string()), true};
    return {KOVA_Value(*text), !counts(*text)};
  }
  const double number = fpIterator->GetNumericValue(fVar);
  return {KOVA_Value(number), number == KOVA_SystemMissing || !counts(number)};
}

bool UACaseValueReader::IsSysmis() const {
  return fpIterator->GetVariable(fVar).IsNumeric() &&
         fpIterator->GetNumericValue(fVar) == KOVA_SystemMissing;
}
