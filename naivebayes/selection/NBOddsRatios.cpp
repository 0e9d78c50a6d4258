#include "naivebayes/selection/NBOddsRatios.h"

#include "naivebayes/model/NBayesInputBase.h"

NBOddsRatios::NBOddsRatios(const NBayesInputBase& input) {
  const int targets = input.GetNTargetCategories();
  fStride = static_cast<std::size_t>((input.GetNCategories() + 1) * targets);
  fvRatios.reserve(fStride * static_cast<std::size_t>(targets - 1));
  for (int other = 0; other < targets - 1; ++other) {
    for (int code = -1; code < input.GetNCategories(); ++code) {
      const double* factors = input.GetFactors(code);
      for (int own = 0; own < targets; ++own) {
        fvRatios.push_back(factors[other < own ? other : other + 1] / factors[own]);
      }
    }
  }
}
