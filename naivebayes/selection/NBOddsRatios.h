// By category of an input and of the target, how the input's factors change the odds against that
// category of the target: the factor of each other one divided by its own. For targets of few
// categories.
#pragma once

#include <cstddef>
#include <vector>

class NBayesInputBase;

class NBOddsRatios {
 public:
  // Whether they are worth their room for so many target categories.
  static bool Serve(std::size_t targets) { return targets >= 2 && targets <= 4; }

  NBOddsRatios() = default;
  // REQUIRES: they serve.
  explicit NBOddsRatios(const NBayesInputBase& input);

  // Those of the first other category in place (code + 1) * targets + target, from code -1 on;
  // Stride() further on those of the second, and so on.
  const double* Data() const { return fvRatios.data(); }
  std::size_t Stride() const { return fStride; }

 private:
  std::size_t fStride = 0;
  std::vector<double> fvRatios;
};
