// For each of a run of cases, the products of Pi(k) and the factors P(x_j|k) of the inputs
// multiplied in so far: that of its own category of the target apart from those of the others.
// Their quotient, the odds against the own category, keeps all its digits even where one of them
// is nothing beside the other.
//
// Targets and codes are those of the same cases in every call; they stay the caller's.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "naivebayes/model/NBScaledProducts.h"
#include "naivebayes/selection/NBOddsRatios.h"
#include "naivebayes/selection/NBOddsSum.h"
#include "naivebayes/store/NBCodes.h"

class NBayesInputBase;

class NBOdds {
 public:
  // The priors alone, for cases of these targets.
  void Reset(const std::vector<double>& priors, const std::int32_t* targets, std::size_t cases);

  // Multiplies one input in; a case with a negative code has no factor.
  void Multiply(const NBayesInputBase& input, NBCodes codes, const std::int32_t* targets);

  // To be called after the last Multiply, before the terms are asked for.
  void Align() { fOthers.Align(); }
  // To be called after that, before terms by ratios are asked for.
  void DivideByOwn(const std::int32_t* targets);

  std::size_t Cases() const { return fOthers.Records(); }

  // Adds each case's w * log(1 + odds) to the sum: as the products stand, or with one more input.
  void AddTerms(const double* weights, NBOddsSum& sum) const;
  void AddTerms(const NBayesInputBase& input, NBCodes codes, const std::int32_t* targets,
                const double* weights, NBOddsSum& sum) const;
  // The same by the ratios of the input. REQUIRES: those of its target have them.
  void AddTerms(const NBOddsRatios& ratios, NBCodes codes, const std::int32_t* targets,
                const double* weights, NBOddsSum& sum) const;

 private:
  void ScaleUpOwn();
  // Of 2, by which the quotient is to be multiplied.
  int ExponentOf(std::size_t i) const {
    return fvScalings.empty() ? fOthers.Exponent(i)
                              : fOthers.Exponent(i) + NBScaledProducts::kStep * fvScalings[i];
  }

  NBScaledProducts fOthers;  // with 0 in the place of the own category
  std::vector<double> fvOwn;
  std::vector<std::int32_t> fvScalings;  // how often an own product was scaled up; empty: none was
  // Where NBOddsRatios serve, the others divided by the own product: those of the first other
  // category by case, up to a multiple of 8, then those of the second, and so on.
  std::vector<double> fvOdds;
  double fLeast = 1;  // a bound from below of the own products
};
