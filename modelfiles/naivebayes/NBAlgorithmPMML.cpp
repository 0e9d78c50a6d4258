// The model document: its frame, the data dictionary and the mining schema.
#include "common/xml/DocumentHeader.h"
#include "common/xml/XMLElement.h"
#include "common/xml/XMLError.h"
#include "modelfiles/naivebayes/NBDocuments.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/NBWithinMemory.h"

using MCCommonXML::XMLElement;
using MCNaive::MCStatus;
namespace pmml = MCModelFiles::pmml;

namespace {

constexpr const char* kNamespace = "http://www.dmg.org/PMML-4_3";
constexpr const char* kName = "name";

std::unique_ptr<XMLElement> CreateRoot() {
  auto root = XMLElement::Create("PMML");
  root->AddAttribute("version", "4.3");
  root->AddAttribute("xmlns", kNamespace);
  root->AddAttribute("xmlns:xsi", "http://www.w3.org/2001/XMLSchema-instance");
  root->AddAttribute("xsi:schemaLocation", std::string(kNamespace) + " pmml-4-3.xsd");
  return root;
}

// One Value per category. Labels count only when there is one for each category.
void AddCategories(XMLElement& field, const INBVariable& variable) {
  const INBEncoder* encoder = variable.GetEncoder();
  const int categories = variable.GetNumberOfCategories();
  const std::vector<std::string>& labels = encoder->GetValueLabels();
  const bool labelled = labels.size() == static_cast<std::size_t>(categories);
  for (int i = 0; i < categories; ++i) {
    XMLElement& value = field.AddChild(pmml::kValue);
    const bool known = MCModelFiles::AddCategory(value, encoder, i, i);
    if (known && labelled && !labels[i].empty()) {
      value.AddAttribute(pmml::kDisplayValue, labels[i]);
    }
    value.AddAttribute(pmml::kProperty, "valid");
  }
}

void AddDataField(XMLElement& dictionary, const INBVariable& variable) {
  const INBVariable::MeasureLevel level = variable.GetMeasureLevel();
  const bool continuous = level == INBVariable::kContinuous;
  XMLElement& field = dictionary.AddChild("DataField");
  field.AddAttribute(kName, variable.GetVariableName());
  if (!variable.GetVariableLabel().empty()) {
    field.AddAttribute("displayName", variable.GetVariableLabel());
  }
  field.AddAttribute(pmml::kOptype, continuous ? "continuous" : "categorical");
  field.AddAttribute(pmml::kDataType,
                     level == INBVariable::kStringCategorical ? "string" : "float");
  if (const INBUserMissing* missing = variable.GetUserMissingInfo()) {
    for (auto& element : missing->ExportXML()) field.AddChild(std::move(element));
  }
  if (!continuous) AddCategories(field, variable);
}

// The inputs and the target; `variable` says which one is at work.
void AddDataDictionary(XMLElement& root, const NBVarList& varList, int& variable) {
  XMLElement& dictionary = root.AddChild("DataDictionary");
  for (int i = 0; i < varList.Size(); ++i) {
    const INBVariable::VariableRole role = varList.GetVariableRole(i);
    if (role != INBVariable::kInput && role != INBVariable::kOutput) continue;
    variable = i;
    AddDataField(dictionary, *varList.GetVarAt(i));
  }
  variable = -1;
  dictionary.AddAttribute("numberOfFields", static_cast<double>(dictionary.GetNChildren()));
}

void AddMiningSchema(XMLElement& model, const std::vector<NBayesInput>& inputs,
                     const INBVariable& target) {
  XMLElement& schema = model.AddChild("MiningSchema");
  for (const NBayesInput& input : inputs) {
    schema.AddChild("MiningField").AddAttribute(kName, input.GetVariable()->GetVariableName());
  }
  XMLElement& predicted = schema.AddChild("MiningField");
  predicted.AddAttribute(kName, target.GetVariableName());
  predicted.AddAttribute("usageType", "predicted");
}

void AddModel(XMLElement& root, const NBAlgorithm& algorithm) {
  const NBayesOutput& output = algorithm.GetOutput();
  XMLElement& model = root.AddChild("NaiveBayesModel");
  model.AddAttribute("functionName", "classification");
  model.AddAttribute("threshold", 1.0 / algorithm.GetTotalWeight());
  AddMiningSchema(model, algorithm.GetInputs(), *output.GetVariable());
  XMLElement& inputs = model.AddChild("BayesInputs");
  for (const NBayesInput& input : algorithm.GetInputs()) {
    inputs.AddChild(input.ExportInputXML(output.GetVariable()->GetEncoder()));
  }
  model.AddChild(output.ExportOutputXML());
}

}  // namespace

MCStatus NBAlgorithm::ExportModelXML(std::ostream& os, MCApplicInfo4XML* info) const {
  if (fCancel.TakeCancel()) return MCNaive::Error(MCNaive::kCancelled);
  if (!fbBuilt) return MCNaive::Warning(MCNaive::kNoPreparator);
  if (fInputs.empty()) return MCNaive::Error(MCNaive::kNoInputToExport);
  if (!HasFiniteWeight()) return MCNaive::Error(MCNaive::kWeightNotFinite);
  return MCNaive::WithinMemory([&] { return DoExport(os, info); });
}

MCStatus NBAlgorithm::DoExport(std::ostream& os, MCApplicInfo4XML* info) const {
  int variable = -1;
  try {
    const auto root = CreateRoot();
    MCModelFiles::AddHeader(*root, MCModelFiles::kNBComponentName, info);
    AddDataDictionary(*root, fVarList, variable);
    AddModel(*root, *this);
    MCModelFiles::WriteDocument(os, nullptr, *root, info);
    return {};
  } catch (const MCCommonXML::XMLError&) {
    MCStatus refused = MCNaive::Error(MCNaive::kTextNotForXML);
    refused.SetDiscreteDatum(0, variable);
    return refused;
  }
}
