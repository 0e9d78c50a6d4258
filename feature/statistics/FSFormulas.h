// The formulas of the ranking criteria: each makes one score of what was gathered of a predictor
// and the target, and is found through the table of criteria. A p-value that fails is left missing.
#pragma once

#include "feature/statistics/FSScore.h"

class FSMapIStat;
namespace FSStatistics {
struct ContingencyTable;
}

// The values of one variable by the categories of the other one. The groups are borrowed.
struct FSGroupedValues {
  const FSMapIStat& fGroups;
  double fTotal;  // the weight of all values
};

// The correlation of two variables, missing where there is none, and the weight of their cases.
struct FSCorrelation {
  double fR;
  double fTotal;
};

namespace FSFormulas {

// p-value, statistic, df. A table of fewer than two rows or columns has p-value 1, statistic 0 and
// df 0.
FSScore Pearson(const FSStatistics::ContingencyTable& table);
FSScore LikelihoodRatio(const FSStatistics::ContingencyTable& table);

// V, Pearson's chi-square; nothing for a table of fewer than two rows or columns.
FSScore Cramer(const FSStatistics::ContingencyTable& table);

// Lambda, number of rows.
FSScore Lambda(const FSStatistics::ContingencyTable& table);

// One-way analysis of variance: p-value, F, N; df1, df2. No variation within the groups gives the
// p-value 0 and no F, whatever the degrees of freedom. Sums that overflow give neither.
FSScore Anova(const FSGroupedValues& values);

// The same among chi-square tests, where a smaller second tie-break ranks first: -N.
FSScore AnovaAmongTables(const FSGroupedValues& values);

// Two-sided t test of a correlation: p-value, r^2, N; r, t, N - 2. A correlation of one in size, or
// N below 2, gives the p-value 0 and no t; N = 2 gives t = 0 and no p-value.
FSScore CorrelationTest(const FSCorrelation& correlation);

}  // namespace FSFormulas
