// How the outputs of a ranking criterion are printed: the one place where their kinds become
// formats.
#pragma once

#include "feature/FSCriterion.h"
#include "host/output/pivot/BpProcedure.h"

inline MCHost::OutputFormat PRSFormatOf(FSOutput::Kind kind) {
  switch (kind) {
    case FSOutput::kSignificance:
      return BpProcedure::Significance();
    case FSOutput::kCorrelation:
      return BpProcedure::Correlation();
    case FSOutput::kCount:
      return BpProcedure::Count();
    default:
      return BpProcedure::GeneralStat();
  }
}

// In a table of several criteria, where a correlation is printed as the statistics beside it.
inline MCHost::OutputFormat PRSFormatAmongOthers(FSOutput::Kind kind) {
  return PRSFormatOf(kind == FSOutput::kCorrelation ? FSOutput::kStatistic : kind);
}
