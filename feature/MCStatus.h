// The status of the feature selection component. Codes raised in the engine:
#pragma once

#include <cstdint>

#include "common/MCStatus.h"

namespace MCFeature {

using MCStatus = MCCommon::MCStatus;

// Do not renumber: the codes are part of the interface.
enum StatusCode {
  kCancelled = 1,           // error: stopped by the caller
  kNotRanked = 6,           // error: a result was asked for before the predictors were ranked
  kBadStream = 80003,       // error: the state stream is not in a good state
  kBadBinaryState = 80004,  // error: reading a binary state failed
  kBadXMLState = 80005,     // error: reading an XML state failed
  kNotComputed = 80006,     // error: the criterion asked for was not computed
  kItemOrder = 80007,       // error: items of a case do not increase. Data: previous index, index,
                            // case identifier
  kItemRange = 80008,       // error: an item is outside the predictors. Data: index, number of
                            // predictors, case identifier
  kAllCasesExcluded = 80009,  // error (warning without target): no case has a valid target and a
                              // valid predictor
  kAllMissingOrConstant = 80010,  // warning: every predictor is all missing or constant
  kAllScreenedOut = 80011,        // warning: screening left no predictor
  kTooFewPredictors = 80012,  // more best predictors asked for than are valid. Datum: valid ones
  kNoValidWeight = 80013,     // error (warning without target): no case has a positive weight
  kCannotMerge = 80014,       // error: two components do not fit. Data: MergeObstacle, and what it
                              // says besides
  kOutOfMemory = 80015,       // error: there was not the memory that the work needs
  kWeightsTooLarge = 80016,   // error: the weights add up to more than a double holds
  // Set by the procedure that drives the component.
  kTargetConstant = 80000,  // the target has one value in all cases
  kNoValidCases = 80002     // there is no case, or reading failed
};

// Why two components cannot be merged: discrete datum 0 of kCannotMerge.
enum MergeObstacle {
  kOwnSelf = 1,      // a component and itself: its cases would count twice
  kOtherKind = 2,    // the other one is not this library's
  kStage = 3,        // one is past its data pass, or stands in error, or the other one has no data
  kNPredictors = 4,  // number of predictors
  kPredictorType = 5,    // categorical or continuous. Datum 1: predictor
  kTargetType = 6,       // categorical or continuous
  kTransactional = 7,    // input as transactions or as records
  kTargetColumn = 8,     // position of the target, or its being there
  kCaseIDColumn = 9,     // position of the case identifier
  kWeightColumn = 10,    // position of the weight, or its being there
  kWeightRounding = 11,  // conversion of weights
  kCriteria = 12,        // ranking criteria
  kScreeningRules = 13,  // screening thresholds and which rules apply
  kNMaps = 14,           // category maps for another number of predictors
  kAmbiguousMap = 15,    // a map gives two codes one translation. Datum 1: predictor (-1: target)
  kCategory = 16,     // a category has no translation. Data 1 and 2: predictor (-1: target), code
  kTooManyCases = 17  // more cases than can be counted
};

// Error and warning with a code.
inline MCStatus Error(StatusCode code) { return {code, false}; }
inline MCStatus Warning(StatusCode code) { return {code, true}; }

inline MCStatus CannotMerge(MergeObstacle obstacle, std::int64_t datum1 = 0,
                            std::int64_t datum2 = 0) {
  MCStatus status = Error(kCannotMerge);
  status.SetDiscreteDatum(0, obstacle);
  status.SetDiscreteDatum(1, datum1);
  status.SetDiscreteDatum(2, datum2);
  return status;
}

}  // namespace MCFeature
