// The tables of an evaluation.
#pragma once

#include <string>
#include <vector>

#include "common/evaluation/Evaluation.h"
#include "host/output/OutputText.h"

namespace MCHost {

// The measures by their names in tables and results: "Accuracy", ...
const char* NameOf(MCCommon::Measure measure);

// Evaluation and ClassEvaluation, and for programs Calibration. `caption`: which cases they are;
// empty for none.
// REQUIRES: a session is installed for this thread; one text a class of the evaluation.
void ShowEvaluation(const MCCommon::Evaluation& evaluation, const std::vector<OutputText>& classes,
                    const OutputText& caption);

// Confusions, which is for a page and not too many classes, and for programs ConfusionMatrix, with
// a record for each pair of classes that has a case.
void ShowConfusions(const MCCommon::Evaluation& evaluation, const std::vector<OutputText>& classes);

}  // namespace MCHost
