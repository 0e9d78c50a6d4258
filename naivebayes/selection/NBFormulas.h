// The formulas of subset selection as functions of numbers.
//
// Notation: N total case weight, Pi(k) priors, P(m|k) conditional probabilities, N(k) and N(m,k)
// case weights by target category and by cell. Logarithms are natural. Cells without weight add
// nothing.
#pragma once

#include <vector>

#include "naivebayes/model/NBNumerics.h"

class NBayesInputBase;

namespace NBFormulas {

// sum over k and m of N(m,k) / N * log P(m|k), the weights less those of another table if there is
// one.
double ComputeAJTerm(const NBayesInputBase& model, double n, const NBayesInputBase* less = nullptr);
// The part of one category m of it.
void AddAJTerms(const NBayesInputBase& model, int m, double n, const NBayesInputBase* less,
                NBSum& sum);

// (sum over k of N(k) * log Pi(k)) / N.
double ComputeBase(const std::vector<double>& counts, const std::vector<double>& priors, double n);

// size / 2 * log(N) / N - logLikelihood, for the average log-likelihood of a subset.
double ComputePseudoBIC(int size, double n, double logLikelihood);

// The largest subset size when none is asked for: the forced predictors and an allowance of 20, or
// a fifth of all predictors where that is more, but at most 100; never more than there are.
int ComputeAutomaticSize(int forced, int candidates);

// How many subsets are reported: as asked, 5 when nothing was asked; no more than there are
// candidates, and one more for the forced predictors alone.
int ComputeReportCount(int asked, int forced, int candidates);

}  // namespace NBFormulas
