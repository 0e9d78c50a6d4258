// What the engine of a command holds once its work is done: handed to a session that wants it
// (ISession::TakeFindings). Everything is borrowed for the call.
#pragma once

#include <string>
#include <vector>

#include "common/MissingValue.h"
#include "feature/MCFSCommon.h"
#include "feature/statistics/FSProfile.h"

class IFSAlgorithm;
class INBAlgorithm;
struct NBSelectionResult;
struct StateDictionary;
namespace MCCommon {
class ScoreCurves;
struct Evaluation;
}  // namespace MCCommon

// A scale predictor or target in bins of equal width.
struct PRSBins {
  double fLow = 0.0;
  double fHigh = 0.0;
  int fNBins = 0;
};

// A predictor beside the target, the scale ones of both in bins: pairs of categories and bins.
struct PRSBinnedProfile {
  int fPredictor;
  PRSBins fBins;  // none for a categorical predictor
  FSProfile fProfile;
  double fInformation;  // mutual, in bits
};

// A predictor that was left out of a model: by which rule (MCFSCommon::PredictorDelReason), with
// the threshold in force, where it has one.
struct PRSLeftOut {
  // No rule of screening: the training cases hold one category or bin of it.
  static constexpr int kConstantInTraining = 100;

  std::string fName;
  std::string fLabel;
  bool fbCategorical;
  int fReason;
  double fThreshold = MCMV::gMissingValue;
};

struct PRSFindings {
  // Of SELECTPRED: the ranked component, by which criterion, and how many predictors are selected.
  const IFSAlgorithm* fpFeature = nullptr;
  const StateDictionary* fpDictionary = nullptr;
  MCFSCommon::RankCriteria fRanking = MCFSCommon::kPearson;
  int fNSelected = 0;
  // Where the command has taken them, with the target's bins (none for a categorical one).
  const std::vector<PRSBinnedProfile>* fpBinned = nullptr;
  PRSBins fTargetBins;

  // Of NAIVEBAYES: the model, and the probabilities of its cases; null for a sample without any.
  const INBAlgorithm* fpNaive = nullptr;
  const MCCommon::ScoreCurves* fpTraining = nullptr;
  const MCCommon::ScoreCurves* fpTest = nullptr;
  // Of the test cases, or of training where none test it; null where the command asks for none.
  const MCCommon::Evaluation* fpEvaluation = nullptr;
  // The selection that led to it, its first so many predictors forced; null where there was none.
  const NBSelectionResult* fpSelection = nullptr;
  int fNForced = 0;
  std::vector<PRSLeftOut> fLeftOut{};
  bool fbByTestData = false;  // sizes are compared by the test cases, else by pseudo-BIC
};
