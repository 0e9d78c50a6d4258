#include "naivebayes/validation/NBCrossValidator.h"

#include <algorithm>
#include <limits>

#include "common/evaluation/EvaluationCounter.h"
#include "naivebayes/model/NBScaledProducts.h"
#include "naivebayes/model/NBScoring.h"
#include "naivebayes/selection/NBFormulas.h"
#include "naivebayes/validation/NBFoldLanes.h"
#include "naivebayes/validation/NBFolds.h"
#include "naivebayes/variables/NBVarList.h"

namespace {

constexpr std::size_t kOddsBytes = std::size_t{1} << 28;

// The cases of a fold in a block, with codes for its own bins.
class HeldOut {
 public:
  HeldOut(const NBFoldModel& model, const std::vector<int>& inputs) : fModel(model) {
    for (const int input : inputs) {
      fvInputs.push_back({input, model.BinsOf(static_cast<std::size_t>(input)), {}});
    }
  }

  // Probabilities of the cases, side by side.
  void Score(const NBCodeBlock& codes, const std::vector<std::size_t>& cases,
             std::vector<double>& probabilities) {
    const std::vector<double>& priors = fModel.View().fOutput.GetPriors();
    fProducts.Reset(priors, cases.size());
    for (Input& input : fvInputs) {
      Gather(codes, cases, input);
      fProducts.Multiply(fModel.View().fInputs[static_cast<std::size_t>(input.fInput)],
                         input.fvCodes.data());
    }
    fProducts.Align();
    probabilities.resize(cases.size() * priors.size());
    for (std::size_t n = 0; n < cases.size(); ++n) {
      NBScoring::Normalize(fProducts, n, {&probabilities[n * priors.size()], priors.size()});
    }
  }

 private:
  struct Input {
    int fInput;
    std::vector<std::int32_t> fvBins;  // empty: codes stay
    std::vector<std::int32_t> fvCodes;
  };

  static void Gather(const NBCodeBlock& codes, const std::vector<std::size_t>& cases,
                     Input& input) {
    input.fvCodes.clear();
    for (const std::size_t i : cases) {
      const std::int32_t code = codes.Code(input.fInput, i);
      const bool isMoved = code >= 0 && !input.fvBins.empty();
      input.fvCodes.push_back(isMoved ? input.fvBins[static_cast<std::size_t>(code)] : code);
    }
  }

  const NBFoldModel& fModel;
  std::vector<Input> fvInputs;
  NBScaledProducts fProducts;
};

}  // namespace

NBCrossValidator::NBCrossValidator(const NBModelView& model, const NBVarList& varList,
                                   double totalWeight, NBCodeStore& records, NBCancelInfo& cancel,
                                   MCCommon::Workers& workers)
    : fModel(model),
      fVarList(varList),
      fTotalWeight(totalWeight),
      fRecords(records),
      fCancel(cancel),
      fWorkers(workers) {}

bool NBCrossValidator::Run(const Sizes& sizes, NBCrossValidation& validation) {
  validation.fvRuns.clear();
  validation.fvCandidates.clear();
  for (const NBayesInput& input : fModel.fInputs) {
    const bool isForced = fVarList.GetVariableRole(input.GetVarIndex()) == INBVariable::kInput;
    fNForced += isForced ? 1 : 0;
    if (!isForced) validation.fvCandidates.push_back(input.GetVarIndex());
  }
  if (!ReadTargets()) return false;
  if (fvTargets.size() < static_cast<std::size_t>(validation.fNFolds)) return true;
  for (int repeat = 0; repeat < validation.fNRepeats; ++repeat) {
    fvDealt.push_back(NBFolds::Deal(fvTargets, validation.fNFolds,
                                    validation.fSeed + static_cast<std::uint64_t>(repeat)));
  }
  const auto nFolds = static_cast<std::size_t>(validation.fNFolds);
  const std::size_t nRuns = nFolds * fvDealt.size();
  const std::size_t nLanes =
      NBFoldLanes::MostLanes(fvTargets.size(), fModel.fOutput.GetPriors().size(), kOddsBytes);
  for (std::size_t first = 0; first < nRuns; first += nLanes) {
    std::vector<Fold> folds;
    for (std::size_t run = first; run < std::min(first + nLanes, nRuns); ++run) {
      folds.push_back({static_cast<int>(run / nFolds), static_cast<int>(run % nFolds),
                       NBFoldModel(fModel, fTotalWeight)});
    }
    if (!TakeOutFolds(folds) || !Select(folds, sizes) || !Predict(folds, validation)) {
      return false;
    }
  }
  return true;
}

bool NBCrossValidator::ReadTargets() {
  if (!fRecords.NewPass()) return false;
  while (const NBCodeBlock* codes = fRecords.NextCodes()) {
    if (fCancel.IsCancel()) return false;
    fvTargets.insert(fvTargets.end(), codes->Targets(), codes->Targets() + codes->Cases());
  }
  return !fRecords.HasFailed();
}

bool NBCrossValidator::TakeOutFolds(std::vector<Fold>& folds) {
  if (!fRecords.NewPass()) return false;
  std::size_t done = 0;
  while (const NBCodeBlock* codes = fRecords.NextCodes()) {
    const auto takeOut = [&](std::size_t f, std::size_t) {
      std::vector<std::size_t> cases;
      for (std::size_t i = 0; i < codes->Cases(); ++i) {
        if (FoldsOf(folds[f])[done + i] == folds[f].fFold) cases.push_back(i);
      }
      folds[f].fModel.TakeOut(*codes, cases);
    };
    fWorkers.For(codes->Cases() * fModel.fInputs.size()).ForEach(folds.size(), takeOut, [this] {
      return fCancel.IsCancel();
    });
    if (fCancel.IsCancel()) return false;
    done += codes->Cases();
  }
  for (Fold& fold : folds) fold.fModel.Finish(fModel);
  return !fRecords.HasFailed();
}

void NBCrossValidator::Start(Fold& fold) const {
  for (int j = 0; j < static_cast<int>(fModel.fInputs.size()); ++j) {
    const int index = fModel.fInputs[static_cast<std::size_t>(j)].GetVarIndex();
    if (!fold.fModel.IsUsable(static_cast<std::size_t>(j))) continue;
    const bool isForced = fVarList.GetVariableRole(index) == INBVariable::kInput;
    (isForced ? fold.fvOrder : fold.fvLeft).push_back(j);
  }
}

bool NBCrossValidator::Select(std::vector<Fold>& folds, const Sizes& sizes) {
  std::vector<NBFoldLanes::Lane> lanes;
  for (Fold& fold : folds) {
    Start(fold);
    lanes.push_back({&fold.fModel, &FoldsOf(fold), fold.fFold});
  }
  NBFoldLanes steps(lanes, fRecords, fvTargets.size(), fCancel, fWorkers);
  std::vector<int> entering(folds.size());
  for (std::size_t forced = 0; forced < fNForced; ++forced) {
    for (std::size_t lane = 0; lane < folds.size(); ++lane) {
      const std::vector<int>& order = folds[lane].fvOrder;
      entering[lane] = forced < order.size() ? order[forced] : -1;
    }
    steps.Enter(entering);
  }
  std::vector<std::vector<double>> sums;
  if (!steps.SumTerms({-1}, sums)) return false;
  for (std::size_t lane = 0; lane < folds.size(); ++lane) {
    folds[lane].fvLogLikelihood = {-sums[0][lane] / folds[lane].fModel.GetWeight()};
  }
  for (auto size = static_cast<int>(fNForced); size < sizes.fMost; ++size) {
    const std::vector<int> inputs = CandidatesOf(folds);
    if (inputs.empty()) break;
    if (!steps.SumTerms(inputs, sums) || fCancel.IsCancel()) return false;
    for (std::size_t lane = 0; lane < folds.size(); ++lane) {
      entering[lane] = Choose(folds[lane], inputs, sums, lane);
    }
    steps.Enter(entering);
  }
  for (Fold& fold : folds) {
    if (!sizes.fbExact) CutToBest(fold);
  }
  return !fCancel.IsCancel();
}

std::vector<int> NBCrossValidator::CandidatesOf(const std::vector<Fold>& folds) const {
  std::vector<char> isLeft(fModel.fInputs.size(), 0);
  for (const Fold& fold : folds) {
    for (const int j : fold.fvLeft) isLeft[static_cast<std::size_t>(j)] = 1;
  }
  std::vector<int> inputs;
  for (std::size_t j = 0; j < isLeft.size(); ++j) {
    if (isLeft[j] != 0) inputs.push_back(static_cast<int>(j));
  }
  return inputs;
}

int NBCrossValidator::Choose(Fold& fold, const std::vector<int>& inputs,
                             const std::vector<std::vector<double>>& sums, std::size_t lane) {
  int best = -1;
  double least = 0.0;
  for (std::size_t c = 0; c < inputs.size(); ++c) {
    const bool isCandidate = std::ranges::binary_search(fold.fvLeft, inputs[c]);
    if (!isCandidate || (best >= 0 && !(sums[c][lane] < least))) continue;
    best = inputs[c];
    least = sums[c][lane];
  }
  if (best < 0) return -1;
  std::erase(fold.fvLeft, best);
  fold.fvOrder.push_back(best);
  fold.fvLogLikelihood.push_back(-least / fold.fModel.GetWeight());
  return best;
}

// By the smallest pseudo-BIC, the smaller of two sizes; no predictor at all is no size to choose.
void NBCrossValidator::CutToBest(Fold& fold) const {
  const std::size_t nForced = fold.fvOrder.size() + 1 - fold.fvLogLikelihood.size();
  std::size_t best = nForced;
  double least = std::numeric_limits<double>::infinity();
  for (std::size_t size = std::max<std::size_t>(nForced, 1); size <= fold.fvOrder.size(); ++size) {
    const double criterion = NBFormulas::ComputePseudoBIC(
        static_cast<int>(size), fold.fModel.GetWeight(), fold.fvLogLikelihood[size - nForced]);
    if (!(criterion < least)) continue;
    best = size;
    least = criterion;
  }
  fold.fvOrder.resize(best);
}

bool NBCrossValidator::Predict(std::vector<Fold>& folds, NBCrossValidation& validation) {
  const std::size_t nTargets = fModel.fOutput.GetPriors().size();
  std::vector<MCCommon::EvaluationCounter> counters(folds.size(),
                                                    MCCommon::EvaluationCounter(nTargets));
  std::vector<HeldOut> heldOut;
  for (const Fold& fold : folds) heldOut.emplace_back(fold.fModel, fold.fvOrder);
  if (!fRecords.NewPass()) return false;
  std::size_t done = 0;
  while (const NBCodeBlock* codes = fRecords.NextCodes()) {
    const auto predict = [&](std::size_t f, std::size_t) {
      std::vector<std::size_t> cases;
      for (std::size_t i = 0; i < codes->Cases(); ++i) {
        if (FoldsOf(folds[f])[done + i] == folds[f].fFold) cases.push_back(i);
      }
      std::vector<double> probabilities;
      heldOut[f].Score(*codes, cases, probabilities);
      for (std::size_t n = 0; n < cases.size(); ++n) {
        const std::span<const double> own(&probabilities[n * nTargets], nTargets);
        const int winner = NBScoring::SelectWinner(own, folds[f].fModel.View().fOutput);
        counters[f].Add(static_cast<std::size_t>(codes->Targets()[cases[n]]),
                        static_cast<std::size_t>(winner), own, codes->Weights()[cases[n]]);
      }
    };
    fWorkers.For(codes->Cases() * nTargets * 8).ForEach(folds.size(), predict, [this] {
      return fCancel.IsCancel();
    });
    if (fCancel.IsCancel()) return false;
    done += codes->Cases();
  }
  for (std::size_t f = 0; f < folds.size(); ++f) {
    const Fold& fold = folds[f];
    NBFoldRun& run = validation.fvRuns.emplace_back();
    run.fRepeat = fold.fRepeat;
    run.fFold = fold.fFold;
    run.fTrainingWeight = fold.fModel.GetWeight();
    run.fTestWeight = fTotalWeight - run.fTrainingWeight;
    for (const int j : fold.fvOrder) {
      run.fvChosen.push_back(fModel.fInputs[static_cast<std::size_t>(j)].GetVarIndex());
    }
    run.fEvaluation = counters[f].Find(fold.fModel.View().fOutput.GetPriors());
  }
  return !fRecords.HasFailed();
}
