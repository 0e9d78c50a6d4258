// User-missing definitions in a model document.
#include <limits>

#include "common/xml/XMLElement.h"
#include "modelfiles/naivebayes/NBDocuments.h"
#include "naivebayes/encoders/NBNumericUserMissing.h"
#include "naivebayes/encoders/NBStringUserMissing.h"

using MCCommonXML::XMLElement;
namespace pmml = MCModelFiles::pmml;

namespace {

using Elements = std::vector<std::unique_ptr<XMLElement>>;

constexpr double kHighest = std::numeric_limits<double>::max();

void AddExtension(Elements& elements, const char* name, double value) {
  elements.push_back(XMLElement::Create("Extension"));
  elements.back()->AddAttribute("extender", "PredSelect");
  elements.back()->AddAttribute("name", name);
  elements.back()->AddAttribute(pmml::kValueAttribute, value);
}

template <typename Missing>
void AddDiscreteValues(Elements& elements, const Missing& missing) {
  for (std::size_t i = 0; i < missing.GetDiscreteValues().size(); ++i) {
    elements.push_back(XMLElement::Create(pmml::kValue));
    elements.back()->AddAttribute(pmml::kValueAttribute, missing.GetDiscreteValues()[i]);
    const std::string& label = missing.GetLabels()[i];
    if (!label.empty()) elements.back()->AddAttribute(pmml::kDisplayValue, label);
    elements.back()->AddAttribute(pmml::kProperty, "missing");
  }
}

}  // namespace

std::vector<std::unique_ptr<XMLElement>> NBNumericUserMissing::ExportXML() const {
  Elements elements;
  const double left = fInterval.GetLeftEnd(), right = fInterval.GetRightEnd();
  if (fbInterval && left <= right) {
    if (left > -kHighest) AddExtension(elements, "invalidRangeLower", left);
    if (right < kHighest) AddExtension(elements, "invalidRangeUpper", right);
  }
  AddDiscreteValues(elements, *this);
  return elements;
}

std::vector<std::unique_ptr<XMLElement>> NBStringUserMissing::ExportXML() const {
  Elements elements;
  AddDiscreteValues(elements, *this);
  return elements;
}
