#include "naivebayes/NBFactory.h"

#include "naivebayes/NBAlgorithm.h"

std::unique_ptr<INBAlgorithm> NBFactory::CreateNBAlgorithm(NaiveBayesSettings& settings,
                                                           NBVarList& varList) {
  std::vector<int> constantVars, emptyVars;
  const bool valid =
      varList.GetTargetIndex() >= 0 && varList.IsValidList(constantVars, emptyVars, true);
  fStatus = valid ? MCNaive::MCStatus() : MCNaive::Error(MCNaive::kNotConstructed);
  if (!valid) return nullptr;
  return std::make_unique<NBAlgorithm>(settings, varList);
}
