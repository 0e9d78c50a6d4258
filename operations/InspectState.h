// What a saved state holds.
#pragma once

struct ComponentFile;

namespace MCHost {
class OutputDocument;
}

namespace PredSelect {

struct InspectRequest {
  bool fbWeights = false;  // the weights of evidence of a model, too (ShowEvidence)
};

// Shows the component, its variables, its counts, and the ranking or the model, in a run of the
// document, whose data source is the caller's to name. Counts that are not ranked yet are screened
// and ranked here, as the command that counted them would have done next; they stay ranked, and
// cannot be merged any more. Throws RequestError (weights) for weights of a ranking.
void InspectState(ComponentFile& state, MCHost::OutputDocument& document,
                  const InspectRequest& request = {});

}  // namespace PredSelect
