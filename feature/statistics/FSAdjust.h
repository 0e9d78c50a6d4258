// p-values adjusted for how many predictors were tested. In and out as natural logarithms, so that
// none is lost below the smallest double; a missing one is not a test, and stays missing. In the
// order given, at most 0.
#pragma once

#include <vector>

namespace FSAdjust {

// The smallest false discovery rate at which it is still a discovery (Y. Benjamini and Y. Hochberg,
// Journal of the Royal Statistical Society B 57 (1995), 289-300).
std::vector<double> BenjaminiHochberg(const std::vector<double>& logP);

// The smallest chance of any false discovery at which it is still one (S. Holm, Scandinavian
// Journal of Statistics 6 (1979), 65-70).
std::vector<double> Holm(const std::vector<double>& logP);

}  // namespace FSAdjust
