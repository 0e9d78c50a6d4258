#include "operations/UnseenClasses.h"

#include <algorithm>
#include <string>

#include "host/output/AddNotes.h"
#include "host/output/BpError.h"
#include "host/output/OutputNote.h"
#include "host/output/pivot/BpComposite.h"
#include "host/output/pivot/BpString.h"
#include "naivebayes/INBAlgorithm.h"
#include "naivebayes/model/NBScoredBlock.h"
#include "operations/ModelCategories.h"

namespace PredSelect {

namespace {

constexpr const char* kText = "No training case has ^1: predicted for ^2 cases, ^3 of them tied...";
constexpr std::size_t kNamed = 5;

}  // namespace

UnseenClasses::UnseenClasses(const INBAlgorithm& model) : fModel(model) {
  for (int k = 0; k < model.GetNTargetCategories(); ++k) {
    fIsUnseen.push_back(model.GetTargetCategoryCount(k) > 0 ? 0 : 1);
    if (fIsUnseen.back() != 0) fClasses.push_back(k);
  }
}

void UnseenClasses::Count(const NBScoredBlock& scored) {
  if (fClasses.empty()) return;
  const std::size_t nClasses = fIsUnseen.size();
  for (std::size_t i = 0; i < scored.Cases(); ++i) {
    const int winner = scored.GetWinners()[i];
    if (winner < 0 || fIsUnseen[static_cast<std::size_t>(winner)] == 0) continue;
    const double* first = &scored.GetProbabilities()[i * nClasses];
    ++fNPredicted;
    if (std::count(first, first + nClasses, first[winner]) > 1) ++fNTied;
  }
}

void UnseenClasses::Show() const {
  if (fClasses.empty()) return;
  const NBVarList& variables = fModel.GetVarList();
  const INBVariable& target = *variables.GetVarAt(variables.GetTargetIndex());
  std::string names;
  for (std::size_t i = 0; i < std::min(fClasses.size(), kNamed); ++i) {
    names += (i > 0 ? ", " : "") + CategoryText(target, fClasses[i]);
  }
  if (fClasses.size() > kNamed) names += ", ...";
  BpComposite note(kText);
  note.AddLiteral(names);
  note.AddLiteral(std::to_string(fNPredicted)).AddLiteral(std::to_string(fNTied));
  AddNotes(MCHost::OutputNote::kMethod, BpString("Categories without Training Cases"),
           note.Finish());
  if (fNPredicted == 0) return;
  MCHost::RaiseMessage(MCHost::OutputMessage::kWarning, kText,
                       {names, std::to_string(fNPredicted), std::to_string(fNTied)});
}

}  // namespace PredSelect
