#include "operations/ExplainedScores.h"

#include <algorithm>
#include <cmath>

#include "host/command/VarSpecObj.h"
#include "host/data/KOVA_DataSource.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/model/NBScoredBlock.h"
#include "operations/ModelCases.h"
#include "operations/RequestError.h"

namespace PredSelect {

namespace {

constexpr KOVA_Format kFormat{KOVA_Format::kNumber, 8, 3};

VarSpecObj Role(const KOVA_DataSource& source) {
  return {"", "--explain", CommandDescriptor("score", ""), source, false};
}

int AddText(KOVA_DataSource& source, const std::string& name, int width, const std::string& label) {
  const int column = source.MakeVariable(name, width);
  source.GetVariable(column).SetMeasurementLevel(KOVA_Variable::kNominal);
  source.GetVariable(column).SetLabel(label);
  return column;
}

int AddNumber(KOVA_DataSource& source, const std::string& name, const std::string& label) {
  const int column = source.MakeVariable(name, 0);
  KOVA_Variable& variable = source.GetVariable(column);
  variable.SetFormat(kFormat);
  variable.SetWriteFormat(kFormat);
  variable.SetMeasurementLevel(KOVA_Variable::kScale);
  variable.SetLabel(label);
  return column;
}

[[noreturn]] void RefuseName(const char* root) {
  throw RequestError("explain", "\"" + std::string(root) + "\" cannot name a new variable.");
}

// Where the data have that name, it gets a number.
std::string NameOf(const KOVA_DataSource& source, const char* root) {
  KovaVarName name;
  if (!Role(source).NewVarNameByRoot(KovaVarName(root), name)) RefuseName(root);
  return name.GetName();
}

std::vector<KovaVarName> NamesOf(const KOVA_DataSource& source, const char* root, std::size_t n) {
  std::vector<KovaVarName> names;
  if (!Role(source).NewVarNamesByRoot(KovaVarName(root), static_cast<int>(n), names)) {
    RefuseName(root);
  }
  return names;
}

std::vector<std::string> NamesOf(const NBAlgorithm& model) {
  std::vector<std::string> names;
  for (const NBayesInput& input : model.GetInputs()) {
    names.push_back(input.GetVariable()->GetVariableName());
  }
  return names;
}

}  // namespace

ExplainedScores::ExplainedScores(const NBAlgorithm& model, int predictors, KOVA_DataSource& source,
                                 const std::vector<KOVA_Value>& categories, int width)
    : fEvidence(model),
      fNShown(std::min(static_cast<std::size_t>(predictors), model.GetInputs().size())),
      fNames(NamesOf(model)),
      fAgainst(AddText(source, NameOf(source, "ExplainedAgainst"), width, "Next most likely value"),
               categories, width, {}),
      fSums(fEvidence.GetNClasses()),
      fMargins(fNames.size()) {
  fLogOdds = AddNumber(source, NameOf(source, "ExplainedLogOdds"),
                       "Log-odds of the predicted value against the next most likely one");
  fPrior = AddNumber(source, NameOf(source, "ExplainedPrior"), "What the priors add");
  std::size_t longest = 1;
  for (const std::string& name : fNames) longest = std::max(longest, name.size());
  const std::vector<KovaVarName> names = NamesOf(source, "ExplainedPredictor", fNShown);
  const std::vector<KovaVarName> parts = NamesOf(source, "ExplainedEvidence", fNShown);
  for (std::size_t i = 0; i < fNShown; ++i) {
    const std::string number = std::to_string(i + 1);
    fPredictors.push_back(AddText(source, names[i].GetName(), static_cast<int>(longest),
                                  "Predictor that weighed most, " + number));
    fParts.push_back(AddNumber(source, parts[i].GetName(), "What it adds, " + number));
  }
  if (fNShown == fNames.size()) return;
  fRest = AddNumber(source, NameOf(source, "ExplainedRest"), "What the other predictors add");
}

ExplainedScores::Cells ExplainedScores::CellsOf(KOVA_InputCaseIterator& table) const {
  Cells cells{table.NumberColumn(fLogOdds),
              table.NumberColumn(fPrior),
              fRest < 0 ? nullptr : table.NumberColumn(fRest),
              {},
              {}};
  for (const int column : fPredictors) cells.fPredictors.push_back(table.StringColumn(column));
  for (const int column : fParts) cells.fParts.push_back(table.NumberColumn(column));
  return cells;
}

std::size_t ExplainedScores::NextTo(std::size_t place, std::size_t winner) {
  std::copy_n(fEvidence.OfPriors(), fSums.size(), fSums.begin());
  for (std::size_t j = 0; j < fNames.size(); ++j) {
    const double* evidence = fEvidence.OfCase(place, j);
    for (std::size_t k = 0; k < fSums.size(); ++k) fSums[k] += evidence[k];
  }
  std::size_t next = winner == 0 ? 1 : 0;
  for (std::size_t k = next + 1; k < fSums.size(); ++k) {
    if (k != winner && fSums[k] > fSums[next]) next = k;
  }
  return next;
}

void ExplainedScores::Weigh(std::size_t place, std::size_t winner, std::size_t against) {
  fOrder.clear();
  for (std::size_t j = 0; j < fNames.size(); ++j) {
    const double* evidence = fEvidence.OfCase(place, j);
    fMargins[j] = evidence[winner] - evidence[against];
    if (fEvidence.HasValue(place, j)) fOrder.push_back(j);
  }
  std::ranges::sort(fOrder, [this](std::size_t a, std::size_t b) {
    const double weight = std::abs(fMargins[a]);
    const double other = std::abs(fMargins[b]);
    return weight > other || (weight == other && a < b);
  });
}

void ExplainedScores::Fill(const Cells& cells, std::size_t at, double prior) const {
  const std::size_t nShown = std::min(fNShown, fOrder.size());
  double logOdds = prior;
  for (std::size_t i = 0; i < nShown; ++i) {
    cells.fPredictors[i][at] = &fNames[fOrder[i]];
    cells.fParts[i][at] = fMargins[fOrder[i]];
    logOdds += fMargins[fOrder[i]];
  }
  double rest = 0;
  for (std::size_t i = nShown; i < fOrder.size(); ++i) rest += fMargins[fOrder[i]];
  if (cells.fRest != nullptr) cells.fRest[at] = rest;
  cells.fPrior[at] = prior;
  cells.fLogOdds[at] = logOdds + rest;
}

void ExplainedScores::Store(const MCCommon::RecordBlock& block, const NBScoredBlock& scored,
                            ModelCases& cases) {
  KOVA_InputCaseIterator& table = *cases.Stream().GetProcDS();
  if (!table.MayStore() || block.Cases() == 0 || fEvidence.GetNClasses() < 2) return;
  const std::size_t* places = cases.Stream().GetBlockPlaces();
  const Cells cells = CellsOf(table);
  fEvidence.SetBlock(block);
  fNext.assign(block.Cases(), -1);
  for (std::size_t i = 0; i < block.Cases(); ++i) {
    if (scored.GetWinners()[i] < 0) continue;
    const auto winner = static_cast<std::size_t>(scored.GetWinners()[i]);
    const std::size_t against = NextTo(i, winner);
    fNext[i] = static_cast<std::int32_t>(against);
    Weigh(i, winner, against);
    Fill(cells, places[i], fEvidence.OfPriors()[winner] - fEvidence.OfPriors()[against]);
  }
  fAgainst.Store(table, places, fNext, {});
}

}  // namespace PredSelect
