// The host's messages about the cases of a run. Each call raises one.
#pragma once

#include <string>

#include "host/cases/MCStopProcessor.h"

class ProcedureDataSource;
class UALostWeights;

class UAInpAdaptMsg {
 public:
  explicit UAInpAdaptMsg(ProcedureDataSource& source);

  // Error: no case of the data can be used; `why` is a key of the string table.
  void NoValidCases(const char* why = "the data have no rows") const;

  // Warning: the active data have no cases or no variables to select from.
  void NoValidCasesForSelect() const;

  // Warning: cases were left out since their weights round to 0. Says nothing while none was.
  void WeightsLost(const UALostWeights& weights) const;

  // Error: the data could not be read; `reason` names file, place and cause
  // (UAProcDataSourceIter::GetFailText).
  void ReadFailed(const std::string& reason) const;

  // Error: the run ended early, after so many records, for the cause that the processor kept.
  // Says nothing while nothing has stopped the run.
  void Stopped(const MCStopProcessor& stop, long long recordsRead) const;
};
