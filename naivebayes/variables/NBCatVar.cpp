#include "naivebayes/variables/NBCatVar.h"

#include <algorithm>
#include <numeric>

#include "naivebayes/encoders/NBCatNumEncoder.h"
#include "naivebayes/encoders/NBStringEncoder.h"

namespace {

// Codes 0 .. n-1 in order: a caller's code must never be renumbered by its first appearance.
std::vector<double> IdentityValues(int n) {
  std::vector<double> values(std::max(n, 0));
  std::iota(values.begin(), values.end(), 0.0);
  return values;
}

}  // namespace

NBCatVar::NBCatVar(const std::string& name, const std::string& label, int categories,
                   MeasureLevel level, VariableRole role)
    : INBVariable(name, label, role), fNCategories(categories), fLevel(level) {
  if (level == kStringCategorical) {
    fpEncoder = std::make_unique<NBStringEncoder>(categories);
  } else {
    fpEncoder = std::make_unique<NBCatNumEncoder>(IdentityValues(categories));
    fbNumbered = categories > 0;
  }
}

NBCatVar::NBCatVar(const std::string& name, const std::string& label,
                   const std::vector<double>& values, VariableRole role)
    : INBVariable(name, label, role),
      fNCategories(static_cast<int>(values.size())),
      fLevel(kNumericCategorical),
      fpEncoder(std::make_unique<NBCatNumEncoder>(values)) {}

NBCatVar::NBCatVar(const std::string& name, const std::string& label,
                   const std::vector<std::string>& values, VariableRole role)
    : INBVariable(name, label, role),
      fNCategories(static_cast<int>(values.size())),
      fLevel(kStringCategorical),
      fpEncoder(std::make_unique<NBStringEncoder>(values)) {}

NBCatVar::NBCatVar(const NBCatVar& other)
    : INBVariable(other),
      fNCategories(other.fNCategories),
      fbNumbered(other.fbNumbered),
      fLevel(other.fLevel),
      fpEncoder(other.fpEncoder->Clone()) {}

void NBCatVar::UpdateNumberOfCategories() {
  fNCategories = std::max(fNCategories, fpEncoder->GetNumberOfCategories());
}

std::unique_ptr<INBVariable> NBCatVar::Clone() const { return std::make_unique<NBCatVar>(*this); }

INBVariable::VarStatus NBCatVar::GetVarStatus() {
  UpdateNumberOfCategories();
  if (fNCategories < 1) return kEmpty;
  return fNCategories == 1 ? kConstant : kUsable;
}
