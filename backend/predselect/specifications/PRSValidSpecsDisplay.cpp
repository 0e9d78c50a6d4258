// The debugging dump of the specifications.
#include <ostream>

#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "feature/FSCriterion.h"

namespace {

template <typename Value>
void Show(std::ostream& out, const char* label, const Value& value) {
  out << label << " = " << value << '\n';
}

template <typename List>
void ShowList(std::ostream& out, const char* label, const List* list) {
  out << label << " =";
  if (list == nullptr) {
    out << " none";
  } else {
    for (const auto item : *list) out << ' ' << item;
  }
  out << '\n';
}

}  // namespace

void PRSValidSpecs::Display(std::ostream& out) const {
  DisplayVariables(out);
  DisplayCriteria(out);
  DisplayOutputs(out);
}

void PRSValidSpecs::DisplayVariables(std::ostream& out) const {
  Show(out, "Univariable", fbUniVariable);
  Show(out, "Dependent variable", fDependVar);
  Show(out, "Dependent variable categorical", fbDependCatVar);
  Show(out, "Weight variable", fKOVAWeightVar);
  ShowList(out, "Predictors", fpPredictList.get());
  ShowList(out, "Predictors categorical", fbpPredCatVarList.get());
  ShowList(out, "Forced predictors", fpForcePredList.get());
  ShowList(out, "Forced predictors categorical", fbpForceCatVarList.get());
  ShowList(out, "Excepted variables", fpExceptList.get());
}

void PRSValidSpecs::DisplayCriteria(std::ostream& out) const {
  Show(out, "Screening", fbScreenStatusOn);
  Show(out, "Maximum percent missing", fScreenPCTMissing);
  Show(out, "Maximum percent in one category", fScreenPCTEqual);
  Show(out, "Maximum categories as percent", fScreenPCTUnequal);
  Show(out, "Minimum coefficient of variation", fScreenCoeffVariate);
  Show(out, "Minimum standard deviation", fScreenStdDev);
  Show(out, "Maximum percent missing as typed", fStringPCTMissing);
  Show(out, "Maximum percent in one category as typed", fStringPCTEqual);
  Show(out, "Maximum categories as percent as typed", fStringPCTUnequal);
  Show(out, "Minimum coefficient of variation as typed", fStringCoeffVariate);
  Show(out, "Minimum standard deviation as typed", fStringStdDev);
  Show(out, "Time limit in minutes", fTimer);
  Show(out, "Unselected predictors shown", fShowUnselect);
  Show(out, "Size", fUniSize);
  Show(out, "Ranking criterion", static_cast<int>(fUniRank));
  Show(out, "Cut-off", fUniPCutOff);
  Show(out, "Bins", fMultiBins);
  Show(out, "Memory in kilobytes", fMultiMemAllocate);
  Show(out, "Training sample percent", fMultiTrainSampPCT);
  Show(out, "Training sample variable", fMultiTrainSampVar);
  Show(out, "Maximum subset size", fMultiMaxSize);
  Show(out, "Pseudo-BIC", fbMultiPseudoBIC);
  Show(out, "Test data", fbMultiTestData);
  Show(out, "Exact subset size", fMultiExactSize);
  Show(out, "User-missing values excluded", fbMissingExclude);
}

void PRSValidSpecs::DisplayOutputs(std::ostream& out) const {
  Show(out, "Macro of factors", fFactorMacroVar.GetName());
  Show(out, "Macro of covariates", fCovariateMacroVar.GetName());
  Show(out, "Predicted probability root", fPredProbRoot.GetName());
  Show(out, "Predicted probabilities", fPredProbNumber);
  Show(out, "Predicted value", fPredValVar.GetName());
  Show(out, "Predicted value may get a suffix", fbPredValVarSuffix);
  Show(out, "Model file", fModelFileName);
  for (const FeaturePrintOption option : fFeaturePrintOptions) {
    DisplayFeaturePrintOption(out, "Feature print option", option);
  }
  Show(out, "Print case processing summary", fbPrintCPS);
  Show(out, "Print excluded", fbPrintExclude);
  Show(out, "Print summary", fbPrintSummary);
  Show(out, "Print selected", fbPrintSelect);
  Show(out, "Print classification", fbPrintClassify);
  Show(out, "Print uncertainty", fbPrintUncert);
  Show(out, "Plot summary", fbPlotSummary);
  Show(out, "Plot uncertainty", fbPlotUncert);
}

void PRSValidSpecs::DisplayFeaturePrintOption(std::ostream& out, const std::string& label,
                                              FeaturePrintOption option) {
  const FSCriterion* criterion = FSCriterion::Find(option);
  const bool isOption = criterion != nullptr && criterion->IsChoice();
  out << label << " = " << (isOption ? criterion->fOptionText : "unrecognized") << '\n';
}
