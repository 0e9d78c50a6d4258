// The status values of the Naive Bayes component: codes, and what their data mean.
//
// The numbers are seen by callers and kept in saved results: do not renumber.
#pragma once

#include <cstdint>

#include "common/MCStatus.h"

namespace MCNaive {

using MCCommon::MCStatus;

enum StatusCode : std::int64_t {
  kCancelled = 1,               // cancelled, or the selection failed
  kNotRestored = 2,             // saved state that is damaged, or cannot be read
  kNotConstructed = 3,          // the variable list is not valid
  kNotSaved = 4,                // no model to save, or saving it failed
  kNoPreparator = 6,            // nothing was trained, so records cannot be encoded
  kTemporaryFile = 70001,       // the temporary file cannot be made, written or read back
  kNoSelectionData = 70002,     // the data of a selection hold no record
  kNoTestRecords = 70003,       // no valid record in the test sample
  kSourceFailed = 70004,        // the caller's records could not be read to their end
  kNoInputToExport = 70005,     // a model without any input has no model document
  kTextNotForXML = 70006,       // a text or number that XML cannot hold; data: variable, or -1
  kNoRecordsToProcess = 70007,  // the number of records is below 1, or a pass cannot start
  kEmptyTestSample = 70008,     // a test sample is given with no records
  kModelsDiffer = 70009,        // models that cannot be merged; data: variable, or -1
  kCodeOutOfRange = 70010,      // data: record, code, highest category; the value
  kNoRecordsFound = 70011,      // a pass met no valid record
  kWrongRecordSize = 70012,     // a record does not hold one value per variable needed
  kSizeWithinForced = 70013,    // data: size, forced predictors
  kSizeReduced = 70014,         // warning; data: size, forced predictors, candidates
  kPredictorDropped = 70015,    // warning; data: variable
  kAllInputsMissing = 70016,    // warning
  kTargetMissing = 70017,       // of a record: it is left out
  kWeightMissing = 70018,       // of a record: it is left out
  kTooFewRecords = 70020,       // fewer than 2 training records
  kNoMemory = 70021,            // the operation takes more memory than there is
  kWeightNotFinite = 70022,     // the training weights add up beyond the range of a double
  kUserMissingUnusable = 70023,  // a definition that no value can meet; data: variable
  kRoleTwice = 70024,            // a second target or weight; data: variable
  kNoBins = 70025,               // a continuous input without an encoder; data: variable
  // Set by the procedure that drives the component.
  kVariablesNotMade = 2,  // the new variables cannot be named as asked
  kDataUnusable = 70000   // no case, a constant target, or reading failed
};

inline MCStatus Error(StatusCode code) { return {code, false}; }
inline MCStatus Warning(StatusCode code) { return {code, true}; }

}  // namespace MCNaive
