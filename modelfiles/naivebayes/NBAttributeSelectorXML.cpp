// The result of a predictor selection as a NaiveBayesAttrSelection document.
#include <cmath>

#include "common/xml/DocumentHeader.h"
#include "common/xml/XMLDocType.h"
#include "common/xml/XMLElement.h"
#include "common/xml/XMLError.h"
#include "modelfiles/naivebayes/NBDocuments.h"
#include "naivebayes/selection/NBAttributeSelector.h"
#include "naivebayes/variables/NBVarList.h"

using MCCommonXML::XMLElement;
using MCNaive::MCStatus;

namespace {

constexpr const char* kRoot = "NaiveBayesAttrSelection";
constexpr const char* kDTD = "nbasoutput.dtd";
constexpr const char* kNumberOfPredictors = "numberOfPredictors";
constexpr const char* kPredictorIndex = "predictorIndex";

void DescribeVariable(XMLElement& element, const char* indexName, int index,
                      const INBVariable& variable, int categories) {
  element.AddAttribute(indexName, index);
  element.AddAttribute("variableName", variable.GetVariableName());
  if (!variable.GetVariableLabel().empty()) {
    element.AddAttribute("variableLabel", variable.GetVariableLabel());
  }
  element.AddAttribute("numberOfCategories", categories);
}

}  // namespace

void NBAttributeSelector::AddSubset(XMLElement& root, int size, const double* criterion,
                                    int rank) const {
  XMLElement& subset = root.AddChild("Subset");
  subset.AddAttribute(kNumberOfPredictors, size);
  if (criterion != nullptr) {
    subset.AddAttribute("criterionValue", *criterion);
    subset.AddAttribute("rankOrder", rank);
  }
  for (int s = 0; s < size; ++s) {
    const int variable = fModel.fInputs[fvOrder[s]].GetVarIndex();
    subset.AddChild("PredictorRef").AddAttribute(kPredictorIndex, variable);
  }
}

MCStatus NBAttributeSelector::ExportXML(std::ostream& os, bool testData,
                                        MCApplicInfo4XML* appInfo) const {
  if (fCancel.IsCancel()) return MCNaive::Error(MCNaive::kCancelled);
  if (!std::isfinite(fTotalWeight)) return MCNaive::Warning(MCNaive::kWeightNotFinite);
  const bool evaluated = !fvResults.empty();
  int variable = -1;  // the one whose texts are being taken in
  try {
    const auto root = XMLElement::Create(kRoot);
    root->AddAttribute("version", "1.0");
    root->AddAttribute("subsetChoiceType", evaluated ? "maxNumber" : "exactNumber");
    root->AddAttribute(kNumberOfPredictors, NSizes());
    root->AddAttribute("numberOfSubsets", evaluated ? static_cast<double>(fvResults.size()) : 1);
    if (evaluated) root->AddAttribute("criterion", testData ? "testData" : "BIC");
    MCModelFiles::AddHeader(*root, MCModelFiles::kNBComponentName, appInfo);

    variable = fVarList.GetTargetIndex();
    DescribeVariable(root->AddChild("Target"), "targetIndex", variable,
                     *fVarList.GetVarAt(variable), fModel.fOutput.GetNCategories());
    for (int j : fvOrder) {
      variable = fModel.fInputs[j].GetVarIndex();
      DescribeVariable(root->AddChild("Predictor"), kPredictorIndex, variable,
                       *fVarList.GetVarAt(variable), fModel.fInputs[j].GetNCategories());
    }
    for (std::size_t rank = 0; rank < fvResults.size(); ++rank) {
      const auto& [criterion, size] = fvResults[rank];
      AddSubset(*root, size, &criterion, static_cast<int>(rank));
    }
    if (!evaluated) AddSubset(*root, NSizes(), nullptr, -1);
    const auto docType = MCCommonXML::XMLDocType::Create(kRoot, kDTD, nullptr);
    MCModelFiles::WriteDocument(os, &docType, *root, appInfo);
    return {};
  } catch (const MCCommonXML::XMLError&) {
    MCStatus refused = MCNaive::Warning(MCNaive::kTextNotForXML);
    refused.SetDiscreteDatum(0, variable);
    return refused;
  }
}
