// The tables of a model as weights of evidence.
#pragma once

class INBAlgorithm;

namespace PredSelect {

// Shows what each category or bin of each predictor says of each class, a row a class: training
// weight, and the logarithm of its probability given the class less that given the other class; of
// more than two classes, less the mean over all of them. docs/explain.md.
// REQUIRES: the model was built; a session is installed for this thread.
void ShowEvidence(const INBAlgorithm& model);

// The same of the priors, a row a class: what a case without a value has.
void ShowBaseValues(const INBAlgorithm& model);

}  // namespace PredSelect
