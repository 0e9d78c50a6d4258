// The rules by which a predictor is suspected of a success that new cases will not repeat.
//
// Pure functions of what an engine has counted anyway. Both engines describe a predictor by its
// LeakTraits, and the procedures ask the rules. A rule never removes anything: it gives a reason to
// look twice. Thresholds are chosen to be silent on small honest data; what ignoring each rule
// costs on real tables stands in docs/warnings.md.
#pragma once

namespace MCCommon {

enum class Leak {
  kNone,
  kNamesCases,     // nearly every case has a category of its own
  kNumbersCases,   // the values are 1, 2, 3, ... up to the number of cases, or such from elsewhere
  kDetermines,     // each category goes with one value of the target
  kManyCategories  // so few cases a category that the model takes chance for knowledge
};

// What the rules look at. Cases are those valid on predictor and target; where they have weights, a
// weight counts as so many cases of the mean weight.
struct LeakTraits {
  double fCases = 0.0;
  double fCategories = 0.0;  // with a case; 0 for a continuous predictor
  bool fbDetermines = false;
  double fVariance = 0.0;      // of a continuous predictor
  double fGainOnOthers = 0.0;  // see ManyCategories; 0 where it was not computed
};

namespace LeakCheck {

// Below so many cases nothing is suspected.
inline constexpr double kFewestCases = 30.0;
// More categories than half the cases: most categories then hold a single case.
inline constexpr double kMostCategoriesPerCase = 0.5;
// On average fewer cases a category than this. Measured on 2,800 cases of a census table: pure
// noise with 14 cases a category costs a model 1.4 points of accuracy on test cases, with 28
// nothing.
inline constexpr double kFewestCasesPerCategory = 20.0;
// That the target is determined by chance must be less likely than this.
inline constexpr double kMostLikelyChance = 1e-6;

// Whether the fewness of cases a category alone makes a predictor worth a second look.
bool HasFewCasesPerCategory(double categories, double cases);

// The first reason that applies; kNumbersCases needs NumbersCases below. Many categories are one
// only where the gain on other cases is below 0: the model of this predictor alone then knows less
// of cases that it has not seen than one without any.
Leak Find(const LeakTraits& traits);

// Whether a continuous predictor looks like a running number of the table's cases: whole values,
// as many steps from the lowest to the highest as there are cases, spread evenly.
bool NumbersCases(const LeakTraits& traits, double low, double high, double tableCases);

}  // namespace LeakCheck

// Counts towards LeakTraits: the categories of a predictor, one by one, as they meet the target.
class LeakTally {
 public:
  // `unit` is the weight of one case. REQUIRES: unit > 0.
  explicit LeakTally(double unit) : fUnit(unit) {}

  // A category of the predictor: its weight, and whether all of it has one value of the target.
  void AddCategory(double weight, bool isPure);

  // `largestShare`: of the most frequent value of the target, among these cases.
  LeakTraits Traits(double largestShare) const;

 private:
  // No less than the logarithm of the chance that each category has one value of the target.
  double LogOfChance(double largestShare) const;

  double fUnit;
  double fCases = 0.0;
  double fCategories = 0.0;
  double fRepeatedCases = 0.0;  // in categories of more than one
  double fRepeatedCategories = 0.0;
  bool fbPure = true;  // all of these
};

}  // namespace MCCommon
