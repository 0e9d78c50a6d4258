#include "operations/EvaluateTable.h"

#include <cmath>
#include <map>
#include <new>
#include <optional>
#include <span>
#include <utility>

#include "common/MCAssert.h"
#include "common/evaluation/EvaluationCounter.h"
#include "common/evaluation/ScoreCurves.h"
#include "host/data/DataTable.h"
#include "host/data/ProcedureDataSource.h"
#include "host/output/BpError.h"
#include "host/output/OutputDocument.h"
#include "host/output/ShowText.h"
#include "host/output/evaluation/ShowEvaluation.h"
#include "host/output/pivot/BpPivotTable.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/output/pivot/BpString.h"
#include "host/session/Session.h"
#include "host/session/SessionScope.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/model/NBScoredBlock.h"
#include "operations/DocumentParts.h"
#include "operations/EvaluationFindings.h"
#include "operations/ModelCases.h"
#include "operations/ModelCategories.h"
#include "operations/RequestError.h"

namespace PredSelect {

namespace {

using MCHost::DataTable;
using MCHost::OutputText;

constexpr std::size_t kNamed = 5;

// The classes behind the codes that a table's target is read as.
class TargetClasses {
 public:
  static constexpr int kMissing = -1;

  TargetClasses(const INBVariable& target, const ModelCases& cases)
      : fTarget(target), fCases(cases), fMissing(MissingValuesOf(target)) {
    for (const KOVA_Value& value : CategoriesOf(target)) Add(value);
  }

  // Of a value in a column of records.
  int ClassOf(double value) {
    if (MCMV::IsMissing(value) || value < 0.0) return kMissing;
    while (static_cast<int>(fClassOfCode.size()) < fCases.TargetValues()) Learn();
    return fClassOfCode[static_cast<std::size_t>(value)];
  }

  std::vector<std::string> TakeTexts() { return std::move(fTexts); }

 private:
  void Add(const KOVA_Value& value) {
    const auto isNew = fClasses.emplace(value, static_cast<int>(fTexts.size())).second;
    if (!isNew) return;
    const auto code = static_cast<int>(fTexts.size());
    fTexts.push_back(code < fTarget.GetNumberOfCategories() ? CategoryText(fTarget, code)
                                                            : CategoryText(value));
  }

  // The class of the next code.
  void Learn() {
    const KOVA_Value value = fCases.TargetValue(static_cast<int>(fClassOfCode.size()));
    const bool isMissing = value.IsNumeric() ? fMissing.Contains(value.GetNumber())
                                             : fMissing.Contains(value.GetString());
    if (!isMissing) Add(value);
    fClassOfCode.push_back(isMissing ? kMissing : fClasses.at(value));
    const auto nKnown = static_cast<std::size_t>(fTarget.GetNumberOfCategories());
    if (fTexts.size() <= nKnown + kMostUnknownClasses) return;
    throw RequestError("\"" + fTarget.GetVariableName() + "\" has more than " +
                       std::to_string(kMostUnknownClasses) +
                       " values that are no class of the model.");
  }

  const INBVariable& fTarget;
  const ModelCases& fCases;
  KOVA_MissingValues fMissing;
  std::map<KOVA_Value, int> fClasses;
  std::vector<std::string> fTexts;  // by class
  std::vector<int> fClassOfCode;
};

// One pass over the cases.
class Pass {
 public:
  // Curves are counted on demand.
  Pass(const INBAlgorithm& model, ModelCases& cases, const INBVariable& target,
       bool areCurvesWanted)
      : fModel(model),
        fCases(cases),
        fClasses(target, cases),
        fTarget(static_cast<std::size_t>(model.GetVarList().GetTargetIndex())),
        fNKnown(static_cast<std::size_t>(model.GetNTargetCategories())),
        fCounter(fNKnown) {
    if (areCurvesWanted) fCurves.emplace(static_cast<int>(fNKnown));
  }

  const std::optional<MCCommon::ScoreCurves>& GetCurves() const { return fCurves; }

  // False when the user stopped it.
  bool Run(const Surroundings& surroundings) {
    const std::size_t most =
        NBScoredBlock::PreferredCases(fModel.GetNTargetCategories(), fModel.GetNumberOfInputVars());
    NBScoredBlock scored(surroundings.fThreads);
    for (;;) {
      const MCCommon::RecordBlock& block = fCases.NextBlock(most);
      if (block.Cases() == 0) return true;
      if (surroundings.IsCancelled()) return false;
      const MCNaive::MCStatus status = fModel.ScoreBlock(block, scored);
      if (status.GetErrorCode() == MCNaive::kNoMemory) throw std::bad_alloc();
      MCCommon::Assert(!status.IsError(), "the model was built", "operations/EvaluateTable");
      for (std::size_t i = 0; i < block.Cases(); ++i) Count(block, scored, i);
      Report(surroundings);
    }
  }

  TableEvaluation Find(const std::vector<double>& priors) {
    fEvaluation.fClasses = fClasses.TakeTexts();
    fEvaluation.fNKnown = fNKnown;
    fEvaluation.fFound = fCounter.Find(priors);
    return std::move(fEvaluation);
  }

 private:
  void Count(const MCCommon::RecordBlock& block, const NBScoredBlock& scored, std::size_t i) {
    ++fEvaluation.fNRows;
    const int observed = fClasses.ClassOf(block.Column(fTarget)[i]);
    const double weight = fCases.Weights() == nullptr ? 1.0 : fCases.Weights()[i];
    const int winner = scored.GetWinners()[i];
    if (observed == TargetClasses::kMissing || winner < 0) {
      ++fEvaluation.fNWithoutTarget;
      return;
    }
    if (MCMV::IsMissing(weight) || !(weight > 0.0)) {
      ++fEvaluation.fNWithoutWeight;
      return;
    }
    const auto own = static_cast<std::size_t>(observed);
    fEvaluation.fNOfUnknown += own >= fNKnown ? 1 : 0;
    fEvaluation.fNUnusable += scored.GetWarning(i) == MCNaive::kAllInputsMissing ? 1 : 0;
    const std::span<const double> probabilities(&scored.GetProbabilities()[i * fNKnown], fNKnown);
    fCounter.Add(own, static_cast<std::size_t>(winner), probabilities, weight);
    if (fCurves) fCurves->Count(observed, probabilities, weight);
  }

  void Report(const Surroundings& surroundings) const {
    if (!surroundings.fReportProgress) return;
    surroundings.fReportProgress(MCHost::KeyText(
        "^1: ^2 cases",
        {MCHost::KeyText("Evaluating the model"), std::to_string(fEvaluation.fNRows)}));
  }

  const INBAlgorithm& fModel;
  ModelCases& fCases;
  TargetClasses fClasses;
  std::size_t fTarget;
  std::size_t fNKnown;
  MCCommon::EvaluationCounter fCounter;
  std::optional<MCCommon::ScoreCurves> fCurves;
  TableEvaluation fEvaluation;
};

std::string Named(const std::vector<std::string>& names) {
  std::string list;
  for (std::size_t i = 0; i < names.size() && i < kNamed; ++i) {
    list += (i > 0 ? ", " : "") + names[i];
  }
  if (names.size() <= kNamed) return list;
  return MCHost::KeyText("^1 and ^2 more", {list, std::to_string(names.size() - kNamed)});
}

void WarnOfClasses(const TableEvaluation& evaluation) {
  const auto& texts = evaluation.fClasses;
  std::vector<std::string> absent;
  std::size_t nObserved = 0;
  for (std::size_t k = 0; k < evaluation.fFound.fClasses.size(); ++k) {
    const bool isObserved = evaluation.fFound.fClasses[k].fObserved > 0.0;
    nObserved += isObserved ? 1 : 0;
    if (!isObserved && k < evaluation.fNKnown) absent.push_back(texts[k]);
  }
  if (evaluation.fNOfUnknown > 0) {
    const auto first = texts.begin() + static_cast<std::ptrdiff_t>(evaluation.fNKnown);
    MCHost::RaiseMessage(MCHost::OutputMessage::kWarning,
                         "^1 cases of classes unknown to the model: ^2...",
                         {std::to_string(evaluation.fNOfUnknown), Named({first, texts.end()})});
  }
  if (nObserved == 1) {
    MCHost::RaiseMessage(MCHost::OutputMessage::kWarning, "Cases of one class only...");
  } else if (!absent.empty()) {
    MCHost::RaiseMessage(MCHost::OutputMessage::kWarning, "No case of the classes ^1...",
                         {Named(absent)});
  }
}

void ShowCases(const TableEvaluation& evaluation) {
  BpPivotTable table("Evaluated Cases", "EvaluatedCases");
  BpDimension rows = table.RowDimension("Cases");
  BpDimension columns = table.ColumnDimension("Statistics");
  const BpCategory n = columns.AddCategory(BpString("N"), BpProcedure::Count());
  const auto add = [&](const char* key, std::int64_t cases) {
    table.SetCell({rows.AddCategory(BpString(key)), n}, static_cast<double>(cases));
  };
  add("Evaluated", evaluation.fFound.fNRows);
  add("Without a Target", evaluation.fNWithoutTarget);
  add("Without a Weight", evaluation.fNWithoutWeight);
  add("Total", evaluation.fNRows);
  add("Of an Unknown Class", evaluation.fNOfUnknown);
  add("Without a Usable Predictor", evaluation.fNUnusable);
  table.Show();
}

void Show(const TableEvaluation& evaluation) {
  WarnOfClasses(evaluation);
  std::vector<OutputText> classes;
  for (std::size_t k = 0; k < evaluation.fFound.fClasses.size(); ++k) {
    classes.push_back(OutputText::Literal(evaluation.fClasses[k]));
  }
  MCHost::ShowEvaluation(evaluation.fFound, classes, {});
  MCHost::ShowConfusions(evaluation.fFound, classes);
  ShowCases(evaluation);
}

}  // namespace

Outcome EvaluateTable(DataTable& table, const INBAlgorithm& model, MCHost::OutputDocument& document,
                      const Surroundings& surroundings, TableEvaluation* found) {
  const NBVarList& variables = model.GetVarList();
  const INBVariable& target = *variables.GetVarAt(variables.GetTargetIndex());
  const auto* built = dynamic_cast<const NBAlgorithm*>(&model);
  MCCommon::Assert(built != nullptr, "built != 0", "operations/EvaluateTable");
  MCHost::Session session(table, document);
  const MCHost::SessionScope scope(session);
  RecordData(document, table.CaseCount(), table.ColumnCount());
  MCHost::OutputRun& run = document.BeginRun("evaluate");
  ProcedureDataSource source;
  ModelCases cases(variables, source, ModelCases::Columns::kInputsAndTarget);
  Pass pass(model, cases, target, document.fbFindings);
  if (!pass.Run(surroundings)) return Outcome::kCancelled;
  TableEvaluation evaluation = pass.Find(built->GetOutput().GetPriors());
  if (evaluation.fFound.fNRows == 0) {
    throw RequestError("no case has a valid \"" + target.GetVariableName() +
                       "\", so that there is nothing to evaluate.");
  }
  if (!std::isfinite(evaluation.fFound.fCases)) {
    throw RequestError("the case weights add up to more than a number can hold.");
  }
  Show(evaluation);
  if (pass.GetCurves()) run.fFindings = EvaluationFindings(evaluation, target, *pass.GetCurves());
  if (found != nullptr) *found = std::move(evaluation);
  run.fbCompleted = true;
  return Outcome::kCompleted;
}

}  // namespace PredSelect
