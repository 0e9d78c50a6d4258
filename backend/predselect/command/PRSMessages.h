// The procedures' own messages: those that are about predictors and cases rather than about how a
// command is written.
//
// Each method raises one message through the host, as a key of its string table with up to three
// arguments. Nothing is kept. REQUIRES, for every method: a session is installed for this thread.
#pragma once

#include <string>

#include "common/MCStatus.h"
#include "common/StatusMessage.h"

class PRSMessages {
 public:
  // Raises `text` with the arguments that are not null, in order.
  void GenericWarning(const char* text, const char* arg1 = nullptr, const char* arg2 = nullptr,
                      const char* arg3 = nullptr) const;
  void GenericError(const char* text, const char* arg1 = nullptr, const char* arg2 = nullptr,
                    const char* arg3 = nullptr) const;

  // The message of an engine's status, as grave as the status; null raises nothing. `argument`
  // fills its "^1", if it has one.
  void EngineStatus(const MCCommon::MCStatus& status, const MCCommon::StatusMessage* message,
                    const std::string& argument) const;

  // Warnings: the run goes on.
  void NoValidTestCasesClassify() const;
  void NoUniquePredsSelected() const;
  void NoPredsExcluded() const;
  // n selected or shown predictors have a p-value that was rounded to 0.
  void TiedAtZero(int n) const;
  // The ranking criterion p1 in parameter p2 of subcommand p3 does not apply to the data: `mixed`
  // when categorical and continuous predictors meet, otherwise because nothing in the data suits
  // it.
  void IgnoreRankCriterion(const char* p1, const char* p2, const char* p3, bool mixed) const;

  // Errors: the run ends.
  void SomeForcePredsExcluded() const;
  void TooFewPossPredsExactSize() const;
  void TooFewPossPredsMaxSize() const;
  void AllPossiblePredsExcluded() const;
  void NoPossPredsAvailable() const;
  void NoPredsAvailable() const;
  void DependVarOnly() const;
  void DependVarConst() const;
  void AllPredsMissOrConst() const;
  // Parameter p1 leaves no room beside the predictors of subcommand p2, command p3.
  void ParamLessPossPred(const char* p1, const char* p2, const char* p3, bool strict) const;
  // Parameter p1 is not below the number of candidate predictors of command p2.
  void ParamLessUniquePred(const char* p1, const char* p2, bool strict) const;
};
