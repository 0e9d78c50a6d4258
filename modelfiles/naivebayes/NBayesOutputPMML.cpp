// The target in a model document.
#include "common/xml/XMLElement.h"
#include "modelfiles/naivebayes/NBDocuments.h"
#include "naivebayes/model/NBayesOutput.h"

using MCCommonXML::XMLElement;
namespace pmml = MCModelFiles::pmml;

std::unique_ptr<XMLElement> NBayesOutput::ExportOutputXML() const {
  auto output = XMLElement::Create("BayesOutput");
  output->AddAttribute(pmml::kFieldName, fpVariable->GetVariableName());
  XMLElement& counts = output->AddChild(pmml::kTargetValueCounts);
  for (int k = 0; k < GetNCategories(); ++k) {
    MCModelFiles::AddTargetCount(counts, fpVariable->GetEncoder(), k, GetCount(k));
  }
  return output;
}
