#include "feature/accumulators/FSMapIStat.h"

#include <ostream>

void FSMapIStat::Display(std::ostream& out) const {
  for (const auto& [category, group] : *this) {
    out << "    " << category << ": weight " << group.fWeight << ", mean " << group.fMean.fValue
        << ", squared deviations " << group.fSquaredDeviations << ", variance " << group.fVariance
        << '\n';
  }
}
