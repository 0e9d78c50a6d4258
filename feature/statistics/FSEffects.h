// Effect sizes and their intervals, mutual information, and the rule for small expected counts, as
// functions of counts and moments. docs/methods.md has the formulas.
#pragma once

#include "feature/MCFSCommon.h"
#include "feature/statistics/FSEffect.h"
#include "feature/statistics/FSFormulas.h"
#include "feature/statistics/FSStatistics.h"

namespace FSEffects {

// The effect of one pair, without the share of missing values. A table is tested by the likelihood
// ratio where that ranks, else by Pearson's chi-square; one of fewer than two rows or columns has
// p-value 1 and no size.
FSEffect OfTable(const FSStatistics::ContingencyTable& table, MCFSCommon::RankCriteria ranking);
FSEffect OfGroups(const FSGroupedValues& values);
FSEffect OfCorrelation(const FSCorrelation& correlation);

// The interval of the effect's size at that confidence (0.95): by noncentral chi-square for V and
// noncentral F for eta squared (bounds of the noncentrality, made into the population's value), by
// Fisher's z for r. Both bounds missing for a perfect relation, where there are too few cases, and
// where the distributions give none.
FSInterval IntervalOf(const FSEffect& effect, double confidence);

// W. Bergsma, A bias-correction for Cramer's V and Tschuprow's T, Journal of the Korean Statistical
// Society 42 (2013), 323-328. Missing where the corrected table has no two rows or columns.
double BiasCorrectedV(const FSStatistics::ContingencyTable& table, double chiSquare);

// (SSB - df1 MSW) / (SST + MSW), 0 when that is negative. Missing where df2 is not positive.
double OmegaSquared(const FSStatistics::Anova& anova);

// Sum of n(i,j) / N log2(n(i,j) N / (n(i) n(j))).
double MutualInformation(const FSStatistics::ContingencyTable& table);

// Whether more than a fifth of all cells expect less than 5, or one less than 1 (W. G. Cochran,
// Some methods for strengthening the common chi-square tests, Biometrics 10 (1954), 417-451).
bool HasFewExpected(const FSStatistics::ContingencyTable& table);

}  // namespace FSEffects
