// The findings of an evaluation: observed and predicted classes, and the curves of probabilities.
#pragma once

#include <string>

class INBVariable;
namespace MCCommon {
class ScoreCurves;
}

namespace PredSelect {

struct TableEvaluation;

// As JSON text: docs/report.md. The curves are those of the model's classes.
std::string EvaluationFindings(const TableEvaluation& evaluation, const INBVariable& target,
                               const MCCommon::ScoreCurves& curves);

}  // namespace PredSelect
