#include "backend/predselect/command/PRSMessages.h"

#include <initializer_list>
#include <string>
#include <vector>

#include "host/output/BpError.h"

namespace {

std::vector<std::string> Given(std::initializer_list<const char*> arguments) {
  std::vector<std::string> given;
  for (const char* argument : arguments) {
    if (argument != nullptr) given.emplace_back(argument);
  }
  return given;
}

}  // namespace

void PRSMessages::GenericWarning(const char* text, const char* arg1, const char* arg2,
                                 const char* arg3) const {
  MCHost::RaiseMessage(MCHost::OutputMessage::kWarning, text, Given({arg1, arg2, arg3}));
}

void PRSMessages::GenericError(const char* text, const char* arg1, const char* arg2,
                               const char* arg3) const {
  MCHost::RaiseMessage(MCHost::OutputMessage::kError, text, Given({arg1, arg2, arg3}));
}

void PRSMessages::EngineStatus(const MCCommon::MCStatus& status,
                               const MCCommon::StatusMessage* message,
                               const std::string& argument) const {
  if (message == nullptr) return;
  const bool isFilled = message->fArgument != MCCommon::StatusMessage::kNothing;
  const char* filling = isFilled ? argument.c_str() : nullptr;
  if (status.IsError()) {
    GenericError(message->fKey, filling);
  } else {
    GenericWarning(message->fKey, filling);
  }
}

void PRSMessages::NoValidTestCasesClassify() const {
  GenericWarning("No valid test cases for classification...");
}

void PRSMessages::NoUniquePredsSelected() const {
  GenericWarning("No unique predictors were selected...");
}

void PRSMessages::NoPredsExcluded() const { GenericWarning("No predictors excluded ..."); }

void PRSMessages::TiedAtZero(int n) const {
  GenericWarning("^1 predictors are tied at zero...", std::to_string(n).c_str());
}

void PRSMessages::IgnoreRankCriterion(const char* p1, const char* p2, const char* p3,
                                      bool mixed) const {
  GenericWarning(mixed ? "Mixed rank criterion ^1 in parameter ^2 is ignored, subcommand ^3..."
                       : "Categorical rank criterion ^1 in parameter ^2 is ignored, subcommand "
                         "^3...",
                 p1, p2, p3);
}

void PRSMessages::SomeForcePredsExcluded() const {
  GenericError("Some forced predictors excluded...");
}

void PRSMessages::TooFewPossPredsExactSize() const {
  GenericError("Too few possible predictors, exact size...");
}

void PRSMessages::TooFewPossPredsMaxSize() const {
  GenericError("Too few possible predictors, maximum size...");
}

void PRSMessages::AllPossiblePredsExcluded() const {
  GenericError("All possible predictors excluded...");
}

void PRSMessages::NoPossPredsAvailable() const {
  GenericError("No possible predictors available in data...");
}

void PRSMessages::NoPredsAvailable() const { GenericError("No predictors available in data..."); }

void PRSMessages::DependVarOnly() const { GenericError("Only dependent variable in data..."); }

void PRSMessages::DependVarConst() const { GenericError("Dependent variable constant..."); }

void PRSMessages::AllPredsMissOrConst() const {
  GenericError("All predictors missing or constant...");
}

void PRSMessages::ParamLessPossPred(const char* p1, const char* p2, const char* p3,
                                    bool strict) const {
  GenericError(strict ? "Parameter ^1 less than number of possible predictors in ^3, not "
                        "subcommand ^2..."
                      : "Parameter ^1 less than or equal to number of possible predictors in ^3, "
                        "not ^2...",
               p1, p2, p3);
}

void PRSMessages::ParamLessUniquePred(const char* p1, const char* p2, bool strict) const {
  GenericError(strict ? "Parameter ^1 less than number of unique predictors in ^2..."
                      : "Parameter ^1 less than or equal to number of unique predictors in ^2...",
               p1, p2);
}
