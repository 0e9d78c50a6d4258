// Significance tests on the statistics: what an accumulator reports of F and of a correlation.
#pragma once

class FSMapIStat;

namespace FSTests {

// Outputs are left alone where they cannot be computed; the caller has set them to missing.
//
// One-way analysis of variance: p-value, F (tie1), df1, df2. No variation within the groups gives
// the p-value 0 and no F, whatever the degrees of freedom. Sums that overflow give neither.
void AnovaTest(const FSMapIStat& groups, double overallMean, double total, double& value,
               double& tie1, double& df1, double& df2);

// Two-sided t test of a correlation r over a weight of `total`: p-value, t. A correlation of one
// in size, or a total below 2, gives the p-value 0 and no t.
void CorrelationTest(double r, double total, double& value, double& t);

}  // namespace FSTests
