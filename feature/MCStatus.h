// The status of the feature selection component. Codes raised in the engine:
#pragma once

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
  kNoValidWeight = 80013      // error (warning without target): no case has a positive weight
};

// Error and warning with a code.
inline MCStatus Error(StatusCode code) { return {code, false}; }
inline MCStatus Warning(StatusCode code) { return {code, true}; }

}  // namespace MCFeature
