#include "naivebayes/encoders/NBStringUserMissing.h"

#include <algorithm>
#include <ostream>

void NBStringUserMissing::AddDiscreteValue(const std::string& value, const std::string& label) {
  fvValues.push_back(value);
  fvLabels.push_back(label);
}

bool NBStringUserMissing::Contains(const std::string& value) const {
  return std::find(fvValues.begin(), fvValues.end(), value) != fvValues.end();
}

std::unique_ptr<INBUserMissing> NBStringUserMissing::Clone() const {
  return std::make_unique<NBStringUserMissing>(*this);
}

bool NBStringUserMissing::IsEqualTo(const INBUserMissing* other) const {
  const auto* that = dynamic_cast<const NBStringUserMissing*>(other);
  return that != nullptr && fvValues == that->fvValues;
}

void NBStringUserMissing::Display(std::ostream& os) const {
  os << "User missing:";
  for (const std::string& value : fvValues) os << " \"" << value << '"';
  os << '\n';
}
