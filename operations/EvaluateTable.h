// How good a saved Naive Bayes model is on cases of which the target is known.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/evaluation/Evaluation.h"
#include "operations/Surroundings.h"

class INBAlgorithm;

namespace MCHost {
class DataTable;
class OutputDocument;
}  // namespace MCHost

namespace PredSelect {

// What was found, and of which cases.
struct TableEvaluation {
  MCCommon::Evaluation fFound;
  std::vector<std::string> fClasses;  // those of the model, then those that it does not know
  std::size_t fNKnown = 0;            // classes of the model
  std::int64_t fNRows = 0;            // of the table
  std::int64_t fNWithoutTarget = 0;   // left out, ...
  std::int64_t fNWithoutWeight = 0;   // ... as these are: a weight is missing or not above 0
  std::int64_t fNOfUnknown = 0;       // of a class that the model does not know: taken wrongly
  std::int64_t fNUnusable = 0;        // evaluated, with every predictor missing or new
};

// Classes that the model does not know; with more, the column is none of its target.
inline constexpr std::size_t kMostUnknownClasses = 1000;

// Predicts each case of the table and compares with its target, weighted by the table's weight as
// it stands, in one pass of bounded memory; shows what came of it in a run "evaluate" of the
// document, whose data source is the caller's to name, and hands it to `found` unless that is null
// or the operation does not complete. Completed or cancelled. Throws RequestError for a table that
// does not fit the model or has no case to evaluate; MCHost::HostIOError.
// REQUIRES: the table was prepared; the model was built, as one from a state always is.
Outcome EvaluateTable(MCHost::DataTable& table, const INBAlgorithm& model,
                      MCHost::OutputDocument& document, const Surroundings& surroundings,
                      TableEvaluation* found = nullptr);

}  // namespace PredSelect
