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
  Show(out, "Screening", GetScreenStatusOn());
  Show(out, "Maximum percent missing", GetScreenPCTMissing());
  Show(out, "Maximum percent in one category", GetScreenPCTEqual());
  Show(out, "Maximum categories as percent", GetScreenPCTUnequal());
  Show(out, "Minimum coefficient of variation", GetScreenCoeffVariate());
  Show(out, "Minimum standard deviation", GetScreenStdDev());
  Show(out, "Maximum percent missing as typed", GetStringPCTMissing());
  Show(out, "Maximum percent in one category as typed", GetStringPCTEqual());
  Show(out, "Maximum categories as percent as typed", GetStringPCTUnequal());
  Show(out, "Minimum coefficient of variation as typed", GetStringCoeffVariate());
  Show(out, "Minimum standard deviation as typed", GetStringStdDev());
  Show(out, "Time limit in minutes", GetTimer());
  Show(out, "Unselected predictors shown", GetShowUnselect());
  Show(out, "Size", fOptions.fUniCriteria.fSize);
  Show(out, "Ranking criterion", static_cast<int>(GetUniRank()));
  Show(out, "Cut-off", GetUniPCutOff());
  Show(out, "Exact p-values", fOptions.fUniCriteria.fbExactPValues);
  Show(out, "Bins", GetMultiBins());
  Show(out, "Memory in kilobytes", GetMultiMemAllocate());
  Show(out, "Training sample percent", GetMultiTrainSampPCT());
  Show(out, "Training sample variable", GetMultiTrainSampVar());
  Show(out, "Maximum subset size", GetMultiMaxSize());
  Show(out, "Pseudo-BIC", GetMultiPseudoBIC());
  Show(out, "Test data", GetMultiTestData());
  Show(out, "Exact subset size", GetMultiExactSize());
  Show(out, "User-missing values excluded", IsMissingExclude());
}

void PRSValidSpecs::DisplayOutputs(std::ostream& out) const {
  Show(out, "Macro of factors", fFactorMacroVar.GetName());
  Show(out, "Macro of covariates", fCovariateMacroVar.GetName());
  Show(out, "Predicted probability root", GetPredProbRootName().GetName());
  Show(out, "Predicted probabilities", GetPredProbNumber());
  Show(out, "Predicted value", GetPredValVarName().GetName());
  Show(out, "Predicted value may get a suffix", GetPredValVarSuffix());
  Show(out, "Model file", fModelFileName);
  for (const FeaturePrintOption option : fFeaturePrintOptions) {
    DisplayFeaturePrintOption(out, "Feature print option", option);
  }
  Show(out, "Print case processing summary", GetPrintCPS());
  Show(out, "Print excluded", GetPrintExclude());
  Show(out, "Print summary", GetPrintSummary());
  Show(out, "Print selected", GetPrintSelect());
  Show(out, "Print classification", GetPrintClassify());
  Show(out, "Print uncertainty", GetPrintUncert());
  Show(out, "Print effects", GetPrintEffects());
  Show(out, "Print evaluation", GetPrintEvaluation());
  Show(out, "Plot summary", GetPlotSummary());
  Show(out, "Plot uncertainty", GetPlotUncert());
}

void PRSValidSpecs::DisplayFeaturePrintOption(std::ostream& out, const std::string& label,
                                              FeaturePrintOption option) {
  const FSCriterion* criterion = FSCriterion::Find(option);
  const bool isOption = criterion != nullptr && criterion->IsChoice();
  out << label << " = " << (isOption ? criterion->fOptionText : "unrecognized") << '\n';
}
