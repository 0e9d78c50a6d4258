#include "modelfiles/VariablesDocument.h"

#include <memory>

#include "common/xml/DocumentHeader.h"
#include "common/xml/XMLDocType.h"
#include "common/xml/XMLElement.h"
#include "common/xml/XMLError.h"
#include "modelfiles/StateDictionary.h"

using MCCommonXML::XMLElement;

namespace {

void AddVariable(XMLElement& root, const std::string& role, int index,
                 const StateVariable& variable) {
  XMLElement& element = root.AddChild(role == "target" ? "Target" : "Predictor");
  element.AddAttribute(role + "Index", index);
  element.AddAttribute("variableName", variable.fName);
  if (!variable.fLabel.empty()) element.AddAttribute("variableLabel", variable.fLabel);
  element.AddAttribute(role + "Type", variable.fbCategorical ? "categorical" : "continuous");
  if (variable.fbCategorical) {
    element.AddAttribute("numberOfCategories", variable.GetNCategories());
  }
}

std::unique_ptr<XMLElement> DocumentOf(const StateDictionary& dictionary, int targetIndex) {
  auto root = XMLElement::Create("FSVariables");
  root->AddAttribute("version", "1.0");
  root->AddAttribute("numberOfPredictors", static_cast<double>(dictionary.fPredictors.size()));
  MCModelFiles::AddHeader(*root, "PredSelect Feature Selection Component", nullptr);
  AddVariable(*root, "target", targetIndex, dictionary.fTarget);
  if (!dictionary.fWeight.empty()) {
    root->AddChild("Weight").AddAttribute("variableName", dictionary.fWeight);
  }
  int index = 0;
  for (const StateVariable& predictor : dictionary.fPredictors) {
    AddVariable(*root, "predictor", index++, predictor);
  }
  return root;
}

}  // namespace

std::string WriteVariablesDocument(std::ostream& os, const StateDictionary& dictionary,
                                   int targetIndex) {
  try {
    const auto docType = MCCommonXML::XMLDocType::Create("FSVariables", "fsvariables.dtd", nullptr);
    const std::unique_ptr<XMLElement> root = DocumentOf(dictionary, targetIndex);
    MCModelFiles::WriteDocument(os, &docType, *root, nullptr);
  } catch (const MCCommonXML::XMLError& error) {
    return error.what();
  }
  return "";
}
