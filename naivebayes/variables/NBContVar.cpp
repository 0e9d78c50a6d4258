#include "naivebayes/variables/NBContVar.h"

#include <cmath>
#include <limits>
#include <utility>

namespace {

// The range of nothing seen yet: empty, since the minimum is above the maximum.
constexpr double kNoMin = std::numeric_limits<double>::max();
constexpr double kNoMax = std::numeric_limits<double>::lowest();

}  // namespace

NBContVar::NBContVar(const std::string& name, const std::string& label, double min, double max,
                     int bins, VariableRole role)
    : INBVariable(name, label, role), fMin(min), fMax(max), fNBins(bins) {
  SetupEncoder(bins);
}

NBContVar::NBContVar(const std::string& name, const std::string& label,
                     const std::vector<double>& cutpoints, VariableRole role)
    : INBVariable(name, label, role), fMin(kNoMin), fMax(kNoMax), fNBins(0) {
  SetupEncoder(cutpoints);
  // A single cutpoint still separates two bins, so the range must not look constant.
  if (!cutpoints.empty()) {
    fMin = std::nextafter(cutpoints.front(), kNoMax);
    fMax = cutpoints.back();
  }
}

NBContVar::NBContVar(const NBContVar& other)
    : INBVariable(other),
      fMin(other.fMin),
      fMax(other.fMax),
      fNBins(other.fNBins),
      fvSetupCutpoints(other.fvSetupCutpoints),
      fpEncoder(other.fpEncoder ? std::make_unique<NBBinningEncoder>(*other.fpEncoder) : nullptr) {}

void NBContVar::SetupEncoder(int bins) {
  fNBins = bins;
  TakeEncoder(std::make_unique<NBBinningEncoder>(fMin, fMax, bins));
}

void NBContVar::SetupEncoder(const std::vector<double>& cutpoints) {
  fNBins = static_cast<int>(cutpoints.size()) + 1;
  TakeEncoder(std::make_unique<NBBinningEncoder>(cutpoints));
}

void NBContVar::TakeEncoder(std::unique_ptr<NBBinningEncoder> encoder) {
  if (fpEncoder) {
    encoder->SetValueLabels(fpEncoder->GetValueLabels());
    const INBUserMissing* missing = fpEncoder->GetUserMissingInfo();
    if (missing != nullptr) encoder->SetUserMissingInfo(missing->Clone());
  }
  fpEncoder = std::move(encoder);
  fvSetupCutpoints = fpEncoder->GetBinningCutpoints();
}

void NBContVar::ReplaceEncoder(std::unique_ptr<NBBinningEncoder> encoder) {
  fpEncoder = std::move(encoder);
}

void NBContVar::ClearEncoder(bool forgetRange) {
  fpEncoder.reset();
  fvSetupCutpoints.clear();
  if (forgetRange) SetMinMax(kNoMin, kNoMax);
}

void NBContVar::SetMinMax(double min, double max) {
  fMin = min;
  fMax = max;
}

int NBContVar::GetNumberOfCategories() const {
  return fpEncoder ? fpEncoder->GetNumberOfCategories() : fNBins;
}

std::unique_ptr<INBVariable> NBContVar::Clone() const { return std::make_unique<NBContVar>(*this); }

INBVariable::VarStatus NBContVar::GetVarStatus() {
  if (fMin > fMax || GetNumberOfCategories() < 1) return kEmpty;
  return fMin == fMax ? kConstant : kUsable;
}
