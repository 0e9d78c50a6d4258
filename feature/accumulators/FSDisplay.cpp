#include "feature/accumulators/FSDisplay.h"

#include <ostream>

#include "common/MissingValue.h"
#include "feature/accumulators/FSMapIStat.h"
#include "feature/accumulators/FSMaps.h"
#include "feature/accumulators/FSPredictorState.h"

namespace FSDisplay {

void Value(std::ostream& out, const char* label, double value) {
  out << "  " << label << " = ";
  if (MCMV::IsMissing(value)) {
    out << "missing\n";
  } else {
    out << value << '\n';
  }
}

void State(std::ostream& out, const char* name, const FSPredictorState& state) {
  out << name << '\n';
  Value(out, "Total weight", state.GetTotalWeight());
  Value(out, "Missing weight", state.GetMissingWeight());
  if (state.IsOfCategory()) Value(out, "Valid cases", static_cast<double>(state.GetNValidCases()));
  out << "  All constant = " << (state.IsAllConstant() ? "yes" : "no") << '\n';
}

void Counts(std::ostream& out, const char* label, const FSMapICnt& counts) {
  out << "  " << label << ":\n";
  for (const auto& [category, count] : counts) out << "    " << category << ": " << count << '\n';
}

void Counts(std::ostream& out, const char* label, const FSMapPiCnt& counts) {
  out << "  " << label << ":\n";
  for (const auto& [pair, count] : counts) {
    out << "    " << pair.first << ", " << pair.second << ": " << count << '\n';
  }
}

void Counts(std::ostream& out, const char* label, const FSMapIPCnt& counts) {
  out << "  " << label << ":\n";
  for (const auto& [category, count] : counts) {
    out << "    " << category << ": " << count.first << " cases, weight " << count.second << '\n';
  }
}

void Groups(std::ostream& out, const char* label, const FSMapIStat& groups) {
  out << "  " << label << ":\n";
  for (const auto& [category, group] : groups) {
    out << "    " << category << ": weight " << group.fWeight << ", mean " << group.fMean
        << ", squared deviations " << group.fSquaredDeviations << ", variance " << group.fVariance
        << '\n';
  }
}

}  // namespace FSDisplay
