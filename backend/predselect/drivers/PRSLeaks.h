// Warns of predictors whose success new cases may not repeat (common/LeakCheck.h): names and
// numbers of cases, what determines the target, more categories than the cases can bear.
//
// One warning a command, with each predictor's reason and the EXCEPT line that leaves them all out.
// Nothing is left out by itself.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/LeakCheck.h"

class PRSValidSpecs;
class ProcedureDataSource;
class UAInputAdapter;

class PRSLeaks {
 public:
  // All are borrowed; the adapter has seen the whole table, of so many cases.
  PRSLeaks(const PRSValidSpecs& specs, const ProcedureDataSource& source,
           const UAInputAdapter& adapter, std::int64_t tableCases);

  // Asks the rules about a predictor.
  void Look(int var, const MCCommon::LeakTraits& traits);

  // Raises the warning, if there is anything to warn of.
  void Warn() const;

 private:
  std::string Reason(int var, MCCommon::Leak leak, const MCCommon::LeakTraits& traits) const;
  std::string AsNumber(int var) const;
  std::string Remedies() const;
  std::string ExceptLine(const std::vector<int>& variables) const;
  const std::string& NameOf(int var) const;

  const PRSValidSpecs& fSpecs;
  const ProcedureDataSource& fSource;
  const UAInputAdapter& fAdapter;
  double fTableCases;
  std::vector<int> fFound;
  std::vector<std::string> fReasons;  // of those found
};
