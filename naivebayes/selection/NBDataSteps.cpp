#include "naivebayes/selection/NBDataSteps.h"

#include "naivebayes/selection/NBOddsSum.h"

NBDataSteps::NBDataSteps(const NBModelView& model, double totalWeight, NBCodeStore& records,
                         NBCancelInfo& cancel, MCCommon::Workers& workers, std::size_t mostKept)
    : fModel(model),
      fTotalWeight(totalWeight),
      fRecords(records),
      fCancel(cancel),
      fWorkers(workers),
      fMostKept(mostKept),
      fChunks(model.fOutput.GetNCategories()) {
  if (!NBOddsRatios::Serve(model.fOutput.GetPriors().size())) return;
  for (const NBayesInput& input : model.fInputs) fvRatios.emplace_back(input);
}

NBOdds& NBDataSteps::MakeOdds(std::size_t chunk, const NBCodeBlock& codes) {
  const std::size_t bytes = fChunks.Most() * fModel.fOutput.GetPriors().size() * sizeof(double);
  const bool isNew = chunk >= fvKept.size();
  if (chunk == fvKept.size() && (chunk + 1) * bytes <= fMostKept) fvKept.emplace_back();
  NBOdds& odds = chunk < fvKept.size() ? fvKept[chunk] : fAnew;
  if (isNew) odds.Reset(fModel.fOutput.GetPriors(), codes.Targets(), codes.Cases());
  if (odds.Cases() != codes.Cases()) return odds;
  for (std::size_t s = isNew ? 0 : fNKept; s < fvCurrent.size() && !fCancel.IsCancel(); ++s) {
    const int j = fvCurrent[s];
    odds.Multiply(fModel.fInputs[j], codes.Codes(j), codes.Targets());
  }
  odds.Align();
  odds.DivideByOwn(codes.Targets());
  return odds;
}

void NBDataSteps::AddTerms(const NBOdds& odds, const NBCodeBlock& codes,
                           const std::vector<int>& candidates, std::vector<NBOddsSum>& sums) const {
  const auto add = [&](std::size_t c, std::size_t) {
    const int j = candidates[c];
    if (fvRatios.empty()) {
      odds.AddTerms(fModel.fInputs[j], codes.Codes(j), codes.Targets(), codes.Weights(), sums[c]);
    } else {
      odds.AddTerms(fvRatios[j], codes.Codes(j), codes.Targets(), codes.Weights(), sums[c]);
    }
  };
  const std::size_t products = codes.Cases() * fModel.fOutput.GetPriors().size();
  fWorkers.For(products * candidates.size()).ForEach(candidates.size(), add, [this] {
    return fCancel.IsCancel();
  });
}

bool NBDataSteps::ComputeBJ(const std::vector<int>& candidates, std::vector<double>& out,
                            double& common) {
  const bool isRead = ComputeSums(candidates, out);
  for (double& term : out) term = -term / fTotalWeight;
  common = 0;
  return isRead;
}

bool NBDataSteps::ComputeSums(const std::vector<int>& candidates, std::vector<double>& totals) {
  std::vector<NBOddsSum> sums(candidates.size());
  if (!fRecords.NewPass()) return false;
  std::size_t chunk = 0;
  const auto addChunk = [&](const NBCodeBlock& codes) {
    const NBOdds& odds = MakeOdds(chunk++, codes);
    if (odds.Cases() != codes.Cases()) return false;  // cut off by a failure
    AddTerms(odds, codes, candidates, sums);
    return true;
  };
  while (!fCancel.IsCancel()) {
    const NBCodeBlock* codes = fRecords.NextCodes();
    if (codes == nullptr) break;
    if (!fChunks.ForEach(*codes, addChunk)) return false;
  }
  fNKept = fvCurrent.size();
  totals.clear();
  for (const NBOddsSum& sum : sums) totals.push_back(sum.Total());
  return !fRecords.HasFailed();
}
