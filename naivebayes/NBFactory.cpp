#include "naivebayes/NBFactory.h"

#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/NBWithinMemory.h"

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
  std::unique_ptr<INBAlgorithm> component;
  fStatus = MCNaive::WithinMemory([&] {
    std::vector<int> constantVars, emptyVars;
    const bool valid =
        HasCategoricalTarget(varList) && varList.IsValidList(constantVars, emptyVars, true);
    if (!valid) return MCNaive::Error(MCNaive::kNotConstructed);
    component = std::make_unique<NBAlgorithm>(settings, varList);
    return MCNaive::MCStatus();
  });
  return component;
}
