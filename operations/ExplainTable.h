// What each predictor of a model says of the classes of each case, as numbers for programs.
#pragma once

#include "operations/Surroundings.h"

class INBAlgorithm;

namespace MCHost {
class DataTable;
class OutputDocument;
}  // namespace MCHost

namespace PredSelect {

// Adds a variable a predictor to the table, in the order of the model: the logarithm of the
// probability of its value given the second class less that given the first. Of more than two
// classes it adds one a class, predictor by predictor: the logarithm given the class less the mean
// over all of them. A missing value says 0. With the base values, which are the same of the priors
// and are shown in a run of the document beside all weights of evidence, they add up to the
// posterior's log-odds, and to numbers of which the softmax is the posterior. Completed or
// cancelled. Throws RequestError for a table that does not fit the model; MCHost::HostIOError.
// REQUIRES: the table was prepared; the model was built, as one from a state always is.
Outcome ExplainTable(MCHost::DataTable& table, const INBAlgorithm& model,
                     MCHost::OutputDocument& document, const Surroundings& surroundings);

}  // namespace PredSelect
