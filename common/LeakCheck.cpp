#include "common/LeakCheck.h"

#include <cmath>

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

// The first case of a category may have any value; that all others then have the same one by chance
// is no likelier than the largest share to the power of their number.
LeakTraits LeakTally::Traits(double largestShare) const {
  const double agreeing = fRepeatedCases - fRepeatedCategories;
  const bool isNoChance =
      agreeing * std::log(largestShare) < std::log(LeakCheck::kMostLikelyChance);
  const bool areMost = fRepeatedCases >= 0.5 * fCases;
  return {.fCases = fCases,
          .fCategories = fCategories,
          .fbDetermines = fbPure && isNoChance && areMost};
}

}  // namespace MCCommon
