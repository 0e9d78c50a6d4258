#include "feature/accumulators/FSDisplay.h"

#include <ostream>

#include "common/MissingValue.h"
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

}  // namespace FSDisplay
