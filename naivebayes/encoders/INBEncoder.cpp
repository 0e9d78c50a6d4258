#include "naivebayes/encoders/INBEncoder.h"

#include <utility>

#include "common/MissingValue.h"
#include "naivebayes/encoders/NBNumericUserMissing.h"
#include "naivebayes/encoders/NBStringUserMissing.h"

INBEncoder::INBEncoder(const INBEncoder& other)
    : fvLabels(other.fvLabels), fpMissing(other.fpMissing ? other.fpMissing->Clone() : nullptr) {}

void INBEncoder::SetValueLabel(int code, const std::string& label) {
  const auto index = static_cast<std::size_t>(code);
  if (fvLabels.size() <= index) fvLabels.resize(index + 1);
  fvLabels[index] = label;
}

void INBEncoder::SetUserMissingInfo(std::unique_ptr<INBUserMissing> missing) {
  fpMissing = std::move(missing);
}

bool INBEncoder::IsMissingNumber(double value) const {
  if (MCMV::IsMissing(value)) return true;
  if (!fpMissing || fpMissing->GetDataType() != INBUserMissing::kNumeric) return false;
  return static_cast<const NBNumericUserMissing&>(*fpMissing).Contains(value);
}

bool INBEncoder::IsMissingString(const std::string& value) const {
  if (!fpMissing || fpMissing->GetDataType() != INBUserMissing::kString) return false;
  return static_cast<const NBStringUserMissing&>(*fpMissing).Contains(value);
}
