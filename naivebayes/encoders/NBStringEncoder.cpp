#include "naivebayes/encoders/NBStringEncoder.h"

#include <algorithm>
#include <ostream>

NBStringEncoder::NBStringEncoder(int expected) { fvpValues.reserve(std::max(expected, 0)); }

NBStringEncoder::NBStringEncoder(const std::vector<std::string>& values) {
  for (const std::string& value : values) Enter(value);
}

NBStringEncoder::NBStringEncoder(const NBStringEncoder& other)
    : INBEncoder(other), fCodes(other.fCodes), fHighestCode(other.fHighestCode) {
  CreateLinks();
}

void NBStringEncoder::CreateLinks() {
  fvpValues.assign(fCodes.size(), nullptr);
  for (const auto& [value, code] : fCodes) fvpValues[code] = &value;
}

int NBStringEncoder::Enter(const std::string& value) {
  const auto [entry, isNew] = fCodes.try_emplace(value, fHighestCode + 1);
  if (isNew) {
    fvpValues.push_back(&entry->first);
    ++fHighestCode;
  }
  return entry->second;
}

double NBStringEncoder::Encode(const std::string& value) {
  return IsMissingString(value) ? kMissingCode : Enter(value);
}

double NBStringEncoder::EncodeConst(const std::string& value) const {
  const auto entry = fCodes.find(value);
  return IsMissingString(value) || entry == fCodes.end() ? kMissingCode : entry->second;
}

const std::string* NBStringEncoder::Decode(long code) const {
  return code < 0 || code > fHighestCode ? nullptr : fvpValues[code];
}

std::unique_ptr<INBEncoder> NBStringEncoder::Clone() const {
  return std::make_unique<NBStringEncoder>(*this);
}

void NBStringEncoder::Display(std::ostream& os) const {
  os << "String categories:";
  for (const std::string* value : fvpValues) os << " \"" << *value << '"';
  os << '\n';
}
