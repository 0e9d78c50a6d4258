#include "modelfiles/naivebayes/NBDocuments.h"

#include "common/xml/XMLElement.h"
#include "naivebayes/encoders/NBCatNumEncoder.h"
#include "naivebayes/encoders/NBStringEncoder.h"

using MCCommonXML::XMLElement;

namespace MCModelFiles {

bool AddCategory(XMLElement& element, const INBEncoder* encoder, int category, int unknown) {
  const bool known = encoder != nullptr && category < encoder->GetNumberOfCategories();
  const auto* numbers = dynamic_cast<const NBCatNumEncoder*>(encoder);
  const auto* strings = dynamic_cast<const NBStringEncoder*>(encoder);
  if (known && numbers != nullptr) {
    // Adding 0 makes a negative zero plain: readers may compare values as texts.
    element.AddAttribute(pmml::kValueAttribute, numbers->Decode(category) + 0.0);
  } else if (known && strings != nullptr) {
    element.AddAttribute(pmml::kValueAttribute, *strings->Decode(category));
  } else {
    element.AddAttribute(pmml::kValueAttribute, unknown);
    return false;
  }
  return true;
}

void AddTargetCount(XMLElement& counts, const INBEncoder* targetEncoder, int category,
                    double count) {
  XMLElement& element = counts.AddChild("TargetValueCount");
  AddCategory(element, targetEncoder, category, category);
  element.AddAttribute("count", count);
}

}  // namespace MCModelFiles
