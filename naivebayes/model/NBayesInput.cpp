#include "naivebayes/model/NBayesInput.h"

#include <ostream>

#include "naivebayes/variables/NBCodeMap.h"

NBayesInput::NBayesInput(int varIndex, INBVariable* variable, int targetCategories)
    : fVarIndex(varIndex), fpVariable(variable) {
  Setup(variable->GetNumberOfCategories(), targetCategories);
}

int NBayesInput::ComputeProbabilities(double totalWeight) {
  return NBayesInputBase::ComputeProbabilities(1.0 / totalWeight);
}

void NBayesInput::MergePredictorCounts(const NBayesInput& other, const std::vector<int>& targetMap,
                                       int targetCategories) {
  const std::vector<int> map = MakeCodeMap(*other.fpVariable, other.GetNCategories(), *fpVariable);
  Grow(fpVariable->GetNumberOfCategories(), targetCategories);
  for (int m = 0; m < other.GetNCategories(); ++m) {
    for (int k = 0; k < other.GetNTargetCategories(); ++k) {
      const double count = other.GetCount(m, k);
      if (count > 0) AddCount(map[m], targetMap[k], count);
    }
  }
}

void NBayesInput::Display(std::ostream& os) const {
  os << "Input " << fVarIndex << ' ' << fpVariable->GetVariableName() << '\n';
  NBayesInputBase::Display(os);
}
