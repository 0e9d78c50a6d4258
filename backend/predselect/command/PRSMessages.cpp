#include "backend/predselect/command/PRSMessages.h"

#include "host/output/BpError.h"
#include "host/output/pivot/BpComposite.h"

namespace {

constexpr int kShow = 2;
constexpr int kWarning = 2;
constexpr int kError = 3;

void Raise(int level, const char* text, const char* arg1, const char* arg2, const char* arg3) {
  BpComposite composite(text);
  for (const char* argument : {arg1, arg2, arg3}) {
    if (argument != nullptr) composite.AddLiteral(argument);
  }
  BpError(composite, kShow, level);
}

}  // namespace

void PRSMessages::GenericWarning(const char* text, const char* arg1, const char* arg2,
                                 const char* arg3) const {
  Raise(kWarning, text, arg1, arg2, arg3);
}

void PRSMessages::GenericError(const char* text, const char* arg1, const char* arg2,
                               const char* arg3) const {
  Raise(kError, text, arg1, arg2, arg3);
}

void PRSMessages::NoValidTestCasesClassify() const {
  GenericWarning("No valid test cases for classification...", nullptr, nullptr, nullptr);
}

void PRSMessages::NoUniquePredsSelected() const {
  GenericWarning("No unique predictors were selected...", nullptr, nullptr, nullptr);
}

void PRSMessages::NoPredsExcluded() const {
  GenericWarning("No predictors excluded ...", nullptr, nullptr, nullptr);
}

void PRSMessages::IgnoreRankCriterion(const char* p1, const char* p2, const char* p3,
                                      bool mixed) const {
  GenericWarning(mixed ? "Mixed rank criterion ^1 in parameter ^2 is ignored, subcommand ^3..."
                       : "Categorical rank criterion ^1 in parameter ^2 is ignored, subcommand "
                         "^3...",
                 p1, p2, p3);
}

void PRSMessages::SomeForcePredsExcluded() const {
  GenericError("Some forced predictors excluded...", nullptr, nullptr, nullptr);
}

void PRSMessages::TooFewPossPredsExactSize() const {
  GenericError("Too few possible predictors, exact size...", nullptr, nullptr, nullptr);
}

void PRSMessages::TooFewPossPredsMaxSize() const {
  GenericError("Too few possible predictors, maximum size...", nullptr, nullptr, nullptr);
}

void PRSMessages::AllPossiblePredsExcluded() const {
  GenericError("All possible predictors excluded...", nullptr, nullptr, nullptr);
}

void PRSMessages::NoPossPredsAvailable() const {
  GenericError("No possible predictors available in data...", nullptr, nullptr, nullptr);
}

void PRSMessages::NoPredsAvailable() const {
  GenericError("No predictors available in data...", nullptr, nullptr, nullptr);
}

void PRSMessages::DependVarOnly() const {
  GenericError("Only dependent variable in data...", nullptr, nullptr, nullptr);
}

void PRSMessages::DependVarConst() const {
  GenericError("Dependent variable constant...", nullptr, nullptr, nullptr);
}

void PRSMessages::AllPredsMissOrConst() const {
  GenericError("All predictors missing or constant...", nullptr, nullptr, nullptr);
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
               p1, p2, nullptr);
}
