#include "feature/accumulators/FSMaps.h"

#include <ostream>

void FSMapICnt::Display(std::ostream& out) const {
  for (const auto& [category, count] : *this) out << "    " << category << ": " << count << '\n';
}

void FSMapIPCnt::Display(std::ostream& out) const {
  for (const auto& [category, count] : *this) {
    out << "    " << category << ": " << count.first << " cases, weight " << count.second << '\n';
  }
}

void FSMapPiCnt::Display(std::ostream& out) const {
  for (const auto& [pair, count] : *this) {
    out << "    " << pair.first << ", " << pair.second << ": " << count << '\n';
  }
}
