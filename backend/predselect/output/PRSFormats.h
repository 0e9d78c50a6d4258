// How the outputs of a ranking criterion are printed: the one place where their kinds become
// formats.
#pragma once

#include "feature/FSCriterion.h"
#include "feature/FSSettings.h"
#include "host/output/pivot/BpProcedure.h"

inline MCHost::OutputFormat PRSFormatOf(FSOutput::Kind kind, const FSSettings& settings) {
  switch (kind) {
    case FSOutput::kSignificance:
      return settings.ArePValuesExact() ? BpProcedure::PValue() : BpProcedure::Significance();
    case FSOutput::kCorrelation:
      return BpProcedure::Correlation();
    case FSOutput::kCount:
      return BpProcedure::Count();
    default:
      return BpProcedure::GeneralStat();
  }
}

// In a table of several criteria, where a correlation is printed as the statistics beside it.
inline MCHost::OutputFormat PRSFormatAmongOthers(FSOutput::Kind kind, const FSSettings& settings) {
  return PRSFormatOf(kind == FSOutput::kCorrelation ? FSOutput::kStatistic : kind, settings);
}
