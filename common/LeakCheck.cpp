#include "common/LeakCheck.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace MCCommon {

namespace {

constexpr double kEvenness = 0.1;  // how far a variance may be from that of a running number

}  // namespace

bool LeakCheck::HasFewCasesPerCategory(double categories, double cases) {
  return cases < kFewestCasesPerCategory * categories;
}

Leak LeakCheck::Find(const LeakTraits& traits) {
  if (!(traits.fCases >= kFewestCases)) return Leak::kNone;
  if (traits.fCategories > kMostCategoriesPerCase * traits.fCases) return Leak::kNamesCases;
  if (traits.fbDetermines) return Leak::kDetermines;
  const bool isSparse = HasFewCasesPerCategory(traits.fCategories, traits.fCases);
  return isSparse && traits.fGainOnOthers < 0.0 ? Leak::kManyCategories : Leak::kNone;
}

bool LeakCheck::NumbersCases(const LeakTraits& traits, double low, double high, double tableCases) {
  const bool isWhole = std::floor(low) == low && high - low + 1.0 == tableCases;
  if (!isWhole || !(traits.fCases >= kFewestCases)) return false;
  const double even = (tableCases * tableCases - 1.0) / 12.0;
  return std::abs(traits.fVariance / even - 1.0) <= kEvenness;
}

void LeakTally::AddCategory(double weight, bool isPure) {
  const double cases = weight / fUnit;
  fCases += cases;
  fCategories += 1.0;
  if (cases < 1.5) return;
  fRepeatedCases += cases;
  fRepeatedCategories += 1.0;
  fbPure = fbPure && isPure;
}

// Two bounds of the chance, each sharper than the other somewhere. The first case of a category may
// have any value; that all others then have the same one is no likelier than the largest share to
// the power of their number. And of all the ways to choose which m of the n cases are not of the
// most frequent value, at least (n/m)^m, no more than one a set of categories is made of whole
// ones.
double LeakTally::LogOfChance(double largestShare) const {
  const double agreeing = fRepeatedCases - fRepeatedCategories;
  const double rare = fCases * (1.0 - largestShare);
  const double ways = rare > 0.0 ? rare * std::log(fCases / rare) : 0.0;
  return std::min(agreeing * std::log(largestShare), fCategories * std::numbers::ln2 - ways);
}

LeakTraits LeakTally::Traits(double largestShare) const {
  const bool isNoChance = LogOfChance(largestShare) < std::log(LeakCheck::kMostLikelyChance);
  const bool areMost = fRepeatedCases >= 0.5 * fCases;
  return {.fCases = fCases,
          .fCategories = fCategories,
          .fbDetermines = fbPure && isNoChance && areMost};
}

}  // namespace MCCommon
