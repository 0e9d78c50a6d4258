#include "operations/EvaluationFindings.h"

#include "naivebayes/variables/INBVariable.h"
#include "operations/EvaluateTable.h"
#include "operations/FindingsParts.h"

namespace PredSelect {

std::string EvaluationFindings(const TableEvaluation& evaluation, const INBVariable& target,
                               const MCCommon::ScoreCurves& curves) {
  Json counts = Json::array();
  for (const MCCommon::ClassEvaluation& found : evaluation.fFound.fClasses) {
    counts.push_back(JsonNumber(found.fObserved));
  }
  return TextOf({{"kind", "evaluation"},
                 {"target",
                  {{"name", target.GetVariableName()},
                   {"label", target.GetVariableLabel()},
                   {"categories", evaluation.fClasses},
                   {"counts", std::move(counts)}}},
                 {"confusion", evaluation.fFound.fConfusions},
                 {"curves", CurveFindings(curves, &evaluation.fFound)}});
}

}  // namespace PredSelect
