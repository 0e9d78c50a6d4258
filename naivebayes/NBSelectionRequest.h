// What a selection of predictors is asked for, and what it answers.
#pragma once

#include <iosfwd>
#include <utility>
#include <vector>

#include "common/RecordIterator.h"

class INBParts;
struct MCApplicInfo4XML;
struct NBCrossValidation;

// All that is pointed to stays the caller's.
struct NBSelectionRequest {
  MCCommon::MultiPassRecordIter& fData;  // original records to train on ...
  int fNRecords;                         // ... and how many valid ones at most
  // The largest (exact: the very) number of predictors, forced ones included; -1 automatic.
  int fSize = -1;
  bool fbExact = false;
  // Original records for the test criterion, at most fNTest of them (below 0: all); null for
  // pseudo-BIC.
  MCCommon::MultiPassRecordIter* fpTest = nullptr;
  int fNTest = -1;
  int fNReport = 0;  // sizes to report; 0: five
  // Receives the result as a NaiveBayesAttrSelection document (modelfiles/dtd), whose header says
  // what the application information says (null: what the component says of itself); null for none.
  std::ostream* fpXML = nullptr;
  MCApplicInfo4XML* fpAppInfo = nullptr;
  // The records where they lie in parts: fData and fpTest are then not read, and fbTestInParts says
  // whether the test cases of the parts choose the size. Null for records that are here.
  INBParts* fpParts = nullptr;
  bool fbTestInParts = false;
  // The same selection is cross-validated, by pseudo-BIC or the exact size; null for not. Needs the
  // records in memory, or its runs stay empty.
  NBCrossValidation* fpValidation = nullptr;
};

struct NBSelectionResult {
  std::vector<int> fvSelected;           // variable indices in order of entry
  std::vector<double> fvLogLikelihoods;  // by subset size, from 1 on
  // Sizes and criteria, best first, as many as were to be reported; none for an exact size.
  std::vector<std::pair<int, double>> fvResults;
};
