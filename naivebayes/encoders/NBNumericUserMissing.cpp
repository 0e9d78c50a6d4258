#include "naivebayes/encoders/NBNumericUserMissing.h"

#include <algorithm>
#include <ostream>

void NBNumericUserMissing::AddDiscreteValue(double value, const std::string& label) {
  fvValues.push_back(value);
  fvLabels.push_back(label);
}

void NBNumericUserMissing::SetInterval(const NBNumericInterval& interval) {
  fInterval = interval;
  fbInterval = true;
}

bool NBNumericUserMissing::Contains(double value) const {
  return std::find(fvValues.begin(), fvValues.end(), value) != fvValues.end() ||
         (fbInterval && fInterval.Contains(value));
}

std::unique_ptr<INBUserMissing> NBNumericUserMissing::Clone() const {
  return std::make_unique<NBNumericUserMissing>(*this);
}

bool NBNumericUserMissing::IsEqualTo(const INBUserMissing* other) const {
  const auto* that = dynamic_cast<const NBNumericUserMissing*>(other);
  return that != nullptr && fvValues == that->fvValues && fbInterval == that->fbInterval &&
         (!fbInterval || fInterval == that->fInterval);
}

void NBNumericUserMissing::Display(std::ostream& os) const {
  os << "User missing:";
  for (double value : fvValues) os << ' ' << value;
  if (fbInterval) {
    os << ' ';
    fInterval.Display(os);
  }
  os << '\n';
}
