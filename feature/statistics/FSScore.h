// What one ranking criterion makes of one predictor.
//
// Whatever cannot be computed, or is not the criterion's, is the missing value.
#pragma once

#include <array>

#include "common/MissingValue.h"
#include "feature/MCFSCommon.h"
#include "feature/statistics/FSSignificance.h"

// How far a criterion concerns a predictor, by the kinds of predictor and target.
enum class FSPart {
  kNone,    // not at all: it has no value, and comes last
  kBeside,  // it is ranked beside predictors of the other kind; only value and rank are shown
  kShown    // it is ranked, and all outputs are shown
};

struct FSScore {
  // What the predictor is sorted by.
  double fValue = MCMV::gMissingValue;
  double fTie1 = MCMV::gMissingValue;
  double fTie2 = MCMV::gMissingValue;
  // What is shown besides.
  double fExtra1 = MCMV::gMissingValue;
  double fExtra2 = MCMV::gMissingValue;
  double fExtra3 = MCMV::gMissingValue;
  FSPart fPart = FSPart::kNone;
  // The test of a p-value; known even where the value itself could not be computed.
  FSSignificance fTest;
};

// By MCFSCommon::RankCriteria.
using FSScores = std::array<FSScore, MCFSCommon::kNCriteria>;
