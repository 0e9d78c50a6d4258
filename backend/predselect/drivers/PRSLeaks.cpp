#include "backend/predselect/drivers/PRSLeaks.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "host/cases/UAInputAdapter.h"
#include "host/command/KovaVarName.h"
#include "host/data/ProcedureDataSource.h"
#include "host/output/BpError.h"
#include "host/output/ShowText.h"

using MCCommon::Leak;
using MCHost::KeyText;
namespace LeakCheck = MCCommon::LeakCheck;

namespace {

constexpr std::size_t kMostReasons = 20;
constexpr std::size_t kWidth = 76;  // of the line to paste

std::string Whole(double number) { return std::to_string(std::llround(number)); }

std::string Joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

// A name is quoted within one line of a command.
bool MayBeWritten(const std::string& name) { return name.find_first_of("\r\n") == name.npos; }

bool Contains(const std::vector<int>* variables, int var) {
  return variables != nullptr &&
         std::find(variables->begin(), variables->end(), var) != variables->end();
}

}  // namespace

PRSLeaks::PRSLeaks(const PRSValidSpecs& specs, const ProcedureDataSource& source,
                   const UAInputAdapter& adapter, std::int64_t tableCases)
    : fSpecs(specs),
      fSource(source),
      fAdapter(adapter),
      fTableCases(static_cast<double>(tableCases)) {}

const std::string& PRSLeaks::NameOf(int var) const { return fSource.GetVariable(var).GetName(); }

void PRSLeaks::Look(int var, const MCCommon::LeakTraits& traits) {
  Leak leak = LeakCheck::Find(traits);
  const bool isNumber = traits.fCategories == 0.0 &&
                        LeakCheck::NumbersCases(traits, fAdapter.GetContMinValue(var),
                                                fAdapter.GetContMaxValue(var), fTableCases);
  if (isNumber) leak = Leak::kNumbersCases;
  if (leak == Leak::kNone) return;
  fFound.push_back(var);
  fReasons.push_back(Reason(var, leak, traits));
}

std::string PRSLeaks::Reason(int var, Leak leak, const MCCommon::LeakTraits& traits) const {
  const std::string& name = NameOf(var);
  const std::string categories = Whole(traits.fCategories);
  const std::string cases = Whole(traits.fCases);
  switch (leak) {
    case Leak::kNamesCases:
      return KeyText("^1 names cases: ^2, ^3...", {name, categories, cases}) + AsNumber(var);
    case Leak::kNumbersCases:
      return KeyText("^1 numbers cases: ^2, ^3...", {name, Whole(fAdapter.GetContMinValue(var)),
                                                     Whole(fAdapter.GetContMaxValue(var))});
    case Leak::kDetermines:
      return KeyText("^1 determines ^2...", {name, NameOf(fSpecs.GetDependVar())});
    case Leak::kManyCategories:
      return KeyText("^1 has many categories: ^2, ^3...", {name, categories, cases}) +
             AsNumber(var);
    case Leak::kNone:
      break;
  }
  return "";
}

// A number of so many values is more likely a measure than a category.
std::string PRSLeaks::AsNumber(int var) const {
  return fSource.GetVariable(var).IsNumeric() ? "\n  " + KeyText("As a number, after WITH...") : "";
}

void PRSLeaks::Warn() const {
  if (fFound.empty()) return;
  std::vector<std::string> names;
  for (const int var : fFound) names.push_back(NameOf(var));
  std::string detail;
  const std::size_t nShown = std::min(fReasons.size(), kMostReasons);
  for (std::size_t i = 0; i < nShown; ++i) detail += (i > 0 ? "\n" : "") + fReasons[i];
  const std::size_t nMore = fReasons.size() - nShown;
  if (nMore > 0) detail += "\n" + KeyText("and ^1 more like these", {std::to_string(nMore)});
  const std::string remedies = Remedies();
  if (!remedies.empty()) detail += "\n" + remedies;
  MCHost::RaiseMessage(MCHost::OutputMessage::kWarning,
                       "Predictors better than they are: ^1, ^2...",
                       {Joined(names), std::to_string(names.size())}, detail);
}

// A line given here takes the place of the command's own, since there can be one only.
std::string PRSLeaks::Remedies() const {
  const std::vector<int>* except = fSpecs.GetExceptListPtr();
  std::vector<int> leftOut;
  if (except != nullptr) leftOut = *except;
  const std::size_t nGiven = leftOut.size();
  std::vector<std::string> forced;
  for (const int var : fFound) {
    if (Contains(fSpecs.GetForcePredListPtr(), var)) {
      forced.push_back(NameOf(var));
    } else if (MayBeWritten(NameOf(var))) {
      leftOut.push_back(var);
    }
  }
  std::string text;
  if (!forced.empty()) text = KeyText("Take out of FORCE: ^1", {Joined(forced)});
  if (leftOut.size() == nGiven) return text;
  if (!text.empty()) text += "\n";
  return text + KeyText(nGiven > 0 ? "In the place of EXCEPT:" : "To leave them out:") +
         ExceptLine(leftOut);
}

std::string PRSLeaks::ExceptLine(const std::vector<int>& variables) const {
  std::string text;
  std::string line = "  /EXCEPT VARIABLES=";
  bool isFirst = true;
  for (const int var : variables) {
    const std::string name = KovaVarName(NameOf(var)).Quoted();
    if (!isFirst && line.size() + 1 + name.size() > kWidth) {
      text += "\n" + line;
      line = "   ";
    }
    line += (isFirst ? "" : " ") + name;
    isFirst = false;
  }
  return text + "\n" + line;
}
