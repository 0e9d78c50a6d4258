#include "operations/ModelCategories.h"

#include "common/MissingValue.h"
#include "common/xml/XMLString.h"
#include "naivebayes/encoders/NBCatNumEncoder.h"
#include "naivebayes/encoders/NBNumericUserMissing.h"
#include "naivebayes/encoders/NBStringEncoder.h"
#include "naivebayes/encoders/NBStringUserMissing.h"
#include "naivebayes/variables/INBVariable.h"

namespace PredSelect {

std::string CategoryText(const INBVariable& variable, int code) {
  if (const auto* strings = dynamic_cast<const NBStringEncoder*>(variable.GetEncoder())) {
    const std::string* text = strings->Decode(code);
    return text == nullptr ? std::to_string(code) : *text;
  }
  const double number = CategoryNumber(variable, code);
  return MCMV::IsMissing(number) ? std::to_string(code) : CategoryText(KOVA_Value(number));
}

std::string CategoryText(const KOVA_Value& value) {
  using MCCommonXML::XMLString;
  if (!value.IsNumeric()) return value.GetString();
  return XMLString::Create(value.GetNumber())
      .Escaped(XMLString::Place::kText, XMLString::Encoding::kUTF8);
}

double CategoryNumber(const INBVariable& variable, int code) {
  const auto* numbers = dynamic_cast<const NBCatNumEncoder*>(variable.GetEncoder());
  return numbers == nullptr ? KOVA_SystemMissing : numbers->Decode(code);
}

std::vector<KOVA_Value> CategoriesOf(const INBVariable& variable) {
  const bool isNumeric = variable.GetMeasureLevel() == INBVariable::kNumericCategorical;
  std::vector<KOVA_Value> values;
  for (int code = 0; code < variable.GetNumberOfCategories(); ++code) {
    values.push_back(isNumeric ? KOVA_Value(CategoryNumber(variable, code))
                               : KOVA_Value(CategoryText(variable, code)));
  }
  return values;
}

KOVA_MissingValues MissingValuesOf(const INBVariable& variable) {
  KOVA_MissingValues missing;
  const INBUserMissing* declared = variable.GetUserMissingInfo();
  if (const auto* numbers = dynamic_cast<const NBNumericUserMissing*>(declared)) {
    for (const double value : numbers->GetDiscreteValues()) missing.AddNumber(value);
    const NBNumericInterval& range = numbers->GetInterval();
    if (numbers->HasInterval()) missing.SetRange(range.GetLeftEnd(), range.GetRightEnd());
  }
  if (const auto* strings = dynamic_cast<const NBStringUserMissing*>(declared)) {
    for (const std::string& value : strings->GetDiscreteValues()) missing.AddString(value);
  }
  return missing;
}

}  // namespace PredSelect
