// How each column of a table, taken alone, goes with a target.
#pragma once

#include <string>
#include <vector>

#include "operations/CommandRun.h"
#include "operations/Surroundings.h"

namespace MCHost {
class DataTable;
class OutputDocument;
}  // namespace MCHost

namespace PredSelect {

// What ranks: the p-value of Pearson's or the likelihood-ratio test, where target and predictor are
// categorical (of F or t where one of them is not); Cramer's V or lambda, where all are; or the
// mutual information.
enum class RankBy { kPearson, kLikelihoodRatio, kCramersV, kLambda, kBits };

struct RankRequest {
  std::string fTarget{};
  RankBy fBy = RankBy::kPearson;
  std::vector<std::string> fExcept{};  // are no predictors
  int fTop = 0;                        // so many are shown; 0: all
};

// Numbers that do not apply are missing values.
struct RankedPredictor {
  int fRank;  // from 1
  std::string fName;
  std::string fLabel;  // empty for none
  std::string fTest;   // "X²", "G²", "F", "t"
  double fStatistic;
  double fDf1;
  double fDf2;          // of F
  double fLog10P;       // exact, at any size
  double fAdjusted;     // p-value, Benjamini-Hochberg: false discovery rate
  double fHolm;         // p-value, Holm: familywise error
  std::string fEffect;  // "Bias-Corrected V", "Eta Squared", "Correlation"
  double fSize;         // of that effect
  double fLow;          // its interval of 95 percent
  double fHigh;
  double fBits;                            // mutual information
  double fMissing;                         // percent of the cases with a valid target
  std::vector<MCHost::OutputText> fNotes;  // on the test
};

struct Ranking {
  std::vector<RankedPredictor> fPredictors;  // all that were ranked
  std::vector<LeftOutPredictor> fLeftOut;
};

// The command that the ranking is made of, for RunCommands. Throws RequestError for variables that
// the table does not have.
std::string RankCommand(const MCHost::ITable& table, const RankRequest& request);

// Ranks with exact p-values and effect sizes after screening, and shows the table Ranking, flat, in
// a run "rank" of the document, whose data source is the caller's to name. The ranking goes to
// `ranking`, too, unless it is null or the operation does not complete. Throws RequestError as
// RankCommand does, MCHost::HostIOError.
// REQUIRES: the table was prepared.
Outcome RankPredictors(MCHost::DataTable& table, MCHost::OutputDocument& document,
                       const RankRequest& request, const Surroundings& surroundings,
                       Ranking* ranking = nullptr);

}  // namespace PredSelect
