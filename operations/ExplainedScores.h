// Why a model predicts what it predicts, case by case, as new variables of the table.
//
// The log-odds of the predicted class against the next most likely one are a sum: of the priors'
// log-odds, and of what each predictor's value adds to them (nothing where it is missing). The
// variables hold the class that the odds are against, the log-odds, the priors' part, the
// predictors that weighed most with their parts, and what the others add together. Adding the parts
// in the order of the variables gives the log-odds to the bit. docs/explain.md has the formulas.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/cases/KOVA_Value.h"
#include "host/cases/UAPredictionWriter.h"
#include "naivebayes/model/NBEvidence.h"

class KOVA_DataSource;
class KOVA_InputCaseIterator;
class NBAlgorithm;
class NBScoredBlock;

namespace PredSelect {

class ModelCases;

class ExplainedScores {
 public:
  // Adds the variables, for so many predictors of the model (for all where it has fewer).
  // `categories` are those of the target, in texts of at most `width` bytes (numbers: 0). The model
  // is borrowed. Must outlive the stream of cases, which may hand texts over as late as in its
  // destruction. Throws RequestError (explain) where the data have taken all names.
  ExplainedScores(const NBAlgorithm& model, int predictors, KOVA_DataSource& source,
                  const std::vector<KOVA_Value>& categories, int width);

  // Fills the variables in for the cases of a block and what became of them. A case that was not
  // predicted keeps missing cells.
  void Store(const MCCommon::RecordBlock& block, const NBScoredBlock& scored, ModelCases& cases);

 private:
  // The variables' cells for the cases at hand.
  struct Cells {
    double* fLogOdds;
    double* fPrior;
    double* fRest;  // null where all are shown
    std::vector<const std::string**> fPredictors;
    std::vector<double*> fParts;
  };

  Cells CellsOf(KOVA_InputCaseIterator& table) const;
  // The class next to the winner of a case of the block.
  std::size_t NextTo(std::size_t place, std::size_t winner);
  // What each predictor adds, and fOrder: those with a value, the heaviest first.
  void Weigh(std::size_t place, std::size_t winner, std::size_t against);
  void Fill(const Cells& cells, std::size_t at, double prior) const;

  NBEvidence fEvidence;
  std::size_t fNShown;
  std::vector<std::string> fNames;  // of the predictors
  int fLogOdds;
  int fPrior;
  int fRest = -1;
  std::vector<int> fPredictors;
  std::vector<int> fParts;
  UAPredictionWriter fAgainst;
  // Of the case at hand: sums by class, parts by predictor, and their order.
  std::vector<double> fSums;
  std::vector<double> fMargins;
  std::vector<std::size_t> fOrder;
  std::vector<std::int32_t> fNext;  // by case of the block
};

}  // namespace PredSelect
