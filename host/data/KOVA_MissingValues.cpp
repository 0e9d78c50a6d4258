#include "host/data/KOVA_MissingValues.h"

#include <algorithm>

bool KOVA_MissingValues::Contains(double value) const {
  return (fbRange && fLow <= value && value <= fHigh) ||
         std::find(fNumbers.begin(), fNumbers.end(), value) != fNumbers.end();
}

bool KOVA_MissingValues::Contains(const std::string& value) const {
  return std::find(fStrings.begin(), fStrings.end(), value) != fStrings.end();
}
