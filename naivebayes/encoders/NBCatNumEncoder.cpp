#include "naivebayes/encoders/NBCatNumEncoder.h"

#include <algorithm>
#include <ostream>

#include "common/MissingValue.h"

NBCatNumEncoder::NBCatNumEncoder(int expected) { fvValues.reserve(std::max(expected, 0)); }

NBCatNumEncoder::NBCatNumEncoder(const std::vector<double>& values) {
  for (double value : values) Enter(value);
}

int NBCatNumEncoder::Enter(double value) {
  const auto [entry, isNew] = fCodes.try_emplace(value, fHighestCode + 1);
  if (isNew) {
    fvValues.push_back(value);
    ++fHighestCode;
  }
  return entry->second;
}

double NBCatNumEncoder::Encode(double value) {
  return IsMissingNumber(value) ? kMissingCode : Enter(value);
}

double NBCatNumEncoder::Decode(long code) const {
  return code < 0 || code > fHighestCode ? MCMV::gMissingValue : fvValues[code];
}

std::unique_ptr<INBEncoder> NBCatNumEncoder::Clone() const {
  return std::make_unique<NBCatNumEncoder>(*this);
}

void NBCatNumEncoder::Display(std::ostream& os) const {
  os << "Numeric categories:";
  for (double value : fvValues) os << ' ' << value;
  os << '\n';
}
