// Predictions of a saved Naive Bayes model for the cases of a table.
#pragma once

#include <string>
#include <vector>

#include "operations/Surroundings.h"

class INBAlgorithm;
struct ComponentFile;
namespace PredSelect {
struct ScoringDrift;
}

namespace MCHost {
class DataTable;
class OutputDocument;
}  // namespace MCHost

namespace PredSelect {

struct ScoreRequest {
  std::string fPredicted = "PredictedValue";            // name of the predicted value; only this
                                                        // one gets a number where it is taken
  std::string fProbabilities = "PredictedProbability";  // root of the names, empty for none
  int fExplained = 0;  // of so many predictors what they add to the log-odds (ExplainedScores)
};

// The model of a state, which is called `name` in the refusal. Throws RequestError (model) for a
// ranking of predictors.
const INBAlgorithm& ModelOf(const ComponentFile& state, const std::string& name);

// What the model looks at in the table, by name. Throws RequestError as ScoreTable does, before it
// has looked at a case.
std::vector<std::string> CheckScoring(MCHost::DataTable& table, const INBAlgorithm& model,
                                      const ScoreRequest& request);

// Adds the predicted value and, if asked for, the predicted probability of each category to the
// table, with what explains them, and shows how many cases were predicted and how they differ from
// those that the model was built on, in a run of the document, whose data source is the caller's to
// name. The differences go to `drift`, too, unless it is null or the operation does not complete.
// Names that are taken get a number, but a name of the predicted value that the caller chose is
// refused. A case without a prediction has missing cells. Completed or cancelled. Throws
// RequestError for a table that does not fit the model (no option) and for names that cannot be
// used (predicted, probabilities, explain); MCHost::HostIOError. What is cancelled, or refused for
// a value that a case has, leaves new variables in the table, filled in part. REQUIRES: the table
// was prepared; the model was built, as one from a state always is.
Outcome ScoreTable(MCHost::DataTable& table, const INBAlgorithm& model,
                   MCHost::OutputDocument& document, const ScoreRequest& request,
                   const Surroundings& surroundings, ScoringDrift* drift = nullptr);

}  // namespace PredSelect
