// The ranking criteria as one table: what each is called wherever it is asked for or shown, which
// predictors it ranks and how they are ordered, what it shows of them, and its formulas.
//
// Settings, sorting, the command, tables, charts, result documents and the program's inspection of
// states all read this table. A new statistic is a code (MCFSCommon::RankCriteria), a row and a
// formula (feature/statistics/FSFormulas.h).
#pragma once

#include <array>
#include <span>
#include <string_view>

#include "feature/MCFSCommon.h"
#include "feature/statistics/FSFormulas.h"

// How a number ranks predictors.
enum class FSDirection { kSmallerFirst, kLargerFirst, kIgnored };

struct FSOrder {
  FSDirection fValue;
  FSDirection fTie1;
  FSDirection fTie2;
};

// One number that a criterion shows of a predictor.
struct FSOutput {
  // What it is, for those who print it.
  enum Kind { kSignificance, kStatistic, kCorrelation, kCount };

  const char* fHeading;    // key of its column
  const char* fAttribute;  // of the result documents
  Kind fKind;
  double FSScore::*fpSource;
  // In a table of one criterion it stands beside the columns of the statistic.
  bool fbBeside = false;
  // Key of the note on a predictor of p-value 0 that has no such number. Null: no note.
  const char* fNoteIfLost = nullptr;
};

// What a criterion makes of one pair of kinds, predictor and target.
template <class Input>
struct FSUse {
  FSPart fPart = FSPart::kNone;
  FSScore (*fpFormula)(const Input& input) = nullptr;  // null for kNone
};

struct FSCriterion {
  static constexpr std::size_t kMaxOutputs = 4;

  MCFSCommon::RankCriteria fCode;
  const char* fName;           // for people
  const char* fShortName;      // of the result documents
  const char* fNameInRanking;  // of the document of one ranking
  const char* fHeading;        // key of its group in tables, and of its axis
  const char* fFileStem;       // its document is ranking-<stem>.xml
  // The word by which a command asks for it, and its text in the command's debugging dump. Null for
  // a criterion that follows from the data: that one is always in force where it belongs.
  const char* fKeyword;
  const char* fOptionText;
  // Bits of the PredictorSetType that it serves, by the kind of target.
  unsigned fSetsOfCatTarget;
  unsigned fSetsOfContTarget;
  bool fbByDefault;  // whether it is on unless asked otherwise
  FSOrder fOrder;
  // In the order of GetPredictorStats; the first is the value that ranks.
  std::span<const FSOutput> fOutputs;
  // Its uses; the kind of the predictor comes first.
  FSUse<FSStatistics::ContingencyTable> fCatCat = {};
  FSUse<FSGroupedValues> fCatCont = {};
  FSUse<FSGroupedValues> fContCat = {};
  FSUse<FSCorrelation> fContCont = {};

  // By code, from 0.
  static const std::array<FSCriterion, MCFSCommon::kNCriteria>& All();
  // REQUIRES: a code of the enumeration.
  static const FSCriterion& Of(MCFSCommon::RankCriteria code);
  // Null for a number that is no code, a word that is no keyword.
  static const FSCriterion* Find(int code);
  static const FSCriterion* FindKeyword(std::string_view word);

  // Whether it can rank a set of predictors. A set that has none yet passes for any.
  bool Suits(bool catTarget, MCFSCommon::PredictorSetType set) const;
  // Whether a new set has it on.
  bool IsDefault(bool catTarget, MCFSCommon::PredictorSetType set) const;
  // A command may ask for it; of those in question one always stays on.
  bool IsChoice() const { return fKeyword != nullptr; }
  // Whether it ranks by a p-value.
  bool HasSignificance() const { return fOutputs[0].fKind == FSOutput::kSignificance; }
  FSPart PartOf(bool catPredictor, bool catTarget) const;
  // The outputs of a score in their order, missing behind the last. False, and all are missing,
  // when it shows none.
  bool GetOutputs(const FSScore& score, double& value, double& out2, double& out3,
                  double& out4) const;
};

// The scores of one predictor by the wanted criteria, from what was gathered of it and the target.
template <class Input>
FSScores FSScoresBy(FSUse<Input> FSCriterion::*use, const Input& input,
                    const MCFSCommon::CriteriaSet& wanted) {
  FSScores scores;
  for (const FSCriterion& criterion : FSCriterion::All()) {
    const auto& [part, formula] = criterion.*use;
    FSScore& score = scores[criterion.fCode];
    if (formula != nullptr && wanted[criterion.fCode]) score = formula(input);
    score.fPart = part;
  }
  return scores;
}
