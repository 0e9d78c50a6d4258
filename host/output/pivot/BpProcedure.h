// The output of one run of a procedure: its name and the formats of its numbers.
#pragma once

#include <string>
#include <utility>

#include "host/output/OutputFormat.h"

class BpProcedure {
 public:
  // `kind` is the host's number for the kind of output; all kinds are shown alike.
  BpProcedure(std::string name, int kind) : fName(std::move(name)), fKind(kind) {}

  const std::string& GetName() const { return fName; }
  int GetKind() const { return fKind; }

  static MCHost::OutputFormat Count() { return MCHost::OutputFormat::kCount; }
  static MCHost::OutputFormat Percent() { return MCHost::OutputFormat::kPercent; }
  static MCHost::OutputFormat Significance() { return MCHost::OutputFormat::kSignificance; }
  static MCHost::OutputFormat PValue() { return MCHost::OutputFormat::kPValue; }
  static MCHost::OutputFormat Coefficient() { return MCHost::OutputFormat::kCoefficient; }
  static MCHost::OutputFormat Correlation() { return MCHost::OutputFormat::kCorrelation; }
  static MCHost::OutputFormat GeneralStat() { return MCHost::OutputFormat::kGeneral; }

 private:
  std::string fName;
  int fKind;
};
