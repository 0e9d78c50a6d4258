#include "host/data/KOVA_MissingValues.h"

#include <algorithm>

#include "common/MissingValue.h"

bool KOVA_MissingValues::Contains(double value) const {
  // An open range starts at the lowest double, which is also the marker of system-missing.
  if (MCMV::IsMissing(value)) return false;
  if (fbRange && value >= fLow && value <= fHigh) return true;
  return std::find(fNumbers.begin(), fNumbers.end(), value) != fNumbers.end();
}

bool KOVA_MissingValues::Contains(const std::string& value) const {
  return std::find(fStrings.begin(), fStrings.end(), value) != fStrings.end();
}
