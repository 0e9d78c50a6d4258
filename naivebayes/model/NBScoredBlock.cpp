#include "naivebayes/model/NBScoredBlock.h"

#include <algorithm>
#include <span>

#include "common/RecordBlock.h"
#include "naivebayes/MCStatus.h"
#include "naivebayes/encoders/INBEncoder.h"
#include "naivebayes/model/NBScoring.h"
#include "naivebayes/model/NBayesOutput.h"

std::size_t NBScoredBlock::PreferredCases(int targetCategories, int inputs) {
  constexpr double kFactors = 1 << 21;
  const double perCase = std::max(targetCategories, 1) * (inputs + 1.0);
  const auto cases = static_cast<std::size_t>(kFactors / perCase);
  const auto inCache = MCCommon::RecordBlock::PreferredCases(targetCategories);
  return std::clamp<std::size_t>(cases, 1, inCache);
}

void NBScoredBlock::Start(const NBayesOutput& output, std::size_t cases) {
  fNTargets = output.GetPriors().size();
  fProducts.Reset(output.GetPriors(), cases);
  fvCodes.resize(cases);
  fvCommonBits.assign(cases, INBEncoder::kMissingCode);
  fvOutOfRange.assign(cases, 0);
}

void NBScoredBlock::Multiply(const NBayesInputBase& input) {
  std::int32_t lowest = 0;
  for (std::size_t i = 0; i < fvCodes.size(); ++i) {
    fvCommonBits[i] &= fvCodes[i];
    lowest = std::min(lowest, fvCodes[i]);
  }
  if (lowest < INBEncoder::kMissingCode) {
    for (std::size_t i = 0; i < fvCodes.size(); ++i) {
      fvOutOfRange[i] |= fvCodes[i] < INBEncoder::kMissingCode;
    }
  }
  fProducts.Multiply(input, fvCodes.data());
}

void NBScoredBlock::Decide(const NBayesOutput& output) {
  fProducts.Align();
  const std::size_t cases = fvCodes.size();
  fvWinners.resize(cases);
  fvProbabilities.resize(cases * fNTargets);
  for (std::size_t i = 0; i < cases; ++i) {
    const std::span probabilities(&fvProbabilities[i * fNTargets], fNTargets);
    NBScoring::Normalize(fProducts, i, probabilities);
    fvWinners[i] = fvOutOfRange[i] != 0 ? -1 : NBScoring::SelectWinner(probabilities, output);
  }
}

std::int64_t NBScoredBlock::GetWarning(std::size_t i) const {
  if (fvOutOfRange[i] != 0) return MCNaive::kCodeOutOfRange;
  if (fvCommonBits[i] == INBEncoder::kMissingCode) return MCNaive::kAllInputsMissing;
  return 0;
}
