#include "naivebayes/NBFactory.h"

#include "naivebayes/NBAlgorithm.h"

namespace {

bool HasCategoricalTarget(const NBVarList& varList) {
  if (varList.GetTargetIndex() < 0) return false;
  const INBVariable::MeasureLevel level =
      varList.GetVarAt(varList.GetTargetIndex())->GetMeasureLevel();
  return level == INBVariable::kNumericCategorical || level == INBVariable::kStringCategorical;
}

}  // namespace

std::unique_ptr<INBAlgorithm> NBFactory::CreateNBAlgorithm(NaiveBayesSettings& settings,
                                                           NBVarList& varList) {
  std::vector<int> constantVars, emptyVars;
  const bool valid =
      HasCategoricalTarget(varList) && varList.IsValidList(constantVars, emptyVars, true);
  fStatus = valid ? MCNaive::MCStatus() : MCNaive::Error(MCNaive::kNotConstructed);
  if (!valid) return nullptr;
  return std::make_unique<NBAlgorithm>(settings, varList);
}
