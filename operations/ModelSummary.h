// What a model's command has shown, as values, and these as flat tables.
#pragma once

#include "operations/BuildModel.h"

namespace PredSelect {

// From the tables SubsetSummary, Classification and ExcludedPredictors, as far as they are there.
ModelSummary ReadModelSummary(const CommandRun& run);

// REQUIRES: a session is installed for this thread.
void ShowModelSummary(const ModelSummary& summary);

}  // namespace PredSelect
