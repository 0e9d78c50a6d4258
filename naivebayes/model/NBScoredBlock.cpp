#include "naivebayes/model/NBScoredBlock.h"

#include <algorithm>

#include "common/RecordBlock.h"
#include "naivebayes/MCStatus.h"
#include "naivebayes/encoders/INBEncoder.h"
#include "naivebayes/model/NBScoring.h"
#include "naivebayes/model/NBayesInput.h"
#include "naivebayes/model/NBayesOutput.h"

namespace {

// Cases of which the products stay in the innermost cache, and several of which make a block. The
// same ones whoever scores them.
std::size_t PartSize(std::size_t targetCategories, std::size_t inputs) {
  constexpr std::size_t kFactors = 32768;
  const std::size_t perCase = std::max<std::size_t>(targetCategories, 1) * (inputs + 1);
  return std::clamp<std::size_t>(kFactors / perCase, 32, 512);
}

}  // namespace

std::size_t NBScoredBlock::PreferredCases(int targetCategories, int inputs) {
  constexpr double kFactors = 1 << 21;
  const double perCase = std::max(targetCategories, 1) * (inputs + 1.0);
  const auto cases = static_cast<std::size_t>(kFactors / perCase);
  const auto inCache = MCCommon::RecordBlock::PreferredCases(targetCategories);
  return std::clamp<std::size_t>(cases, 1, inCache);
}

void NBScoredBlock::Score(const NBayesOutput& output, const std::vector<NBayesInput>& inputs,
                          const NBCalibration& calibration, std::size_t cases,
                          const Encode& encode) {
  fNTargets = output.GetPriors().size();
  fvWinners.resize(cases);
  fvProbabilities.resize(cases * fNTargets);
  fvHasValid.assign(cases, 0);
  fvOutOfRange.assign(cases, 0);
  fvRooms.resize(fWorkers.Count());
  const std::size_t size = PartSize(fNTargets, inputs.size());
  const auto score = [&](std::size_t index, std::size_t worker) {
    const Part part{index * size, std::min(size, cases - index * size)};
    Room& room = fvRooms[worker];
    room.fProducts.Reset(output.GetPriors(), part.fNCases);
    Multiply(inputs, part, encode, room);
    Decide(output, calibration, part, room.fProducts);
  };
  fWorkers.For(cases * fNTargets * inputs.size()).ForEach((cases + size - 1) / size, score);
}

void NBScoredBlock::Multiply(const std::vector<NBayesInput>& inputs, const Part& part,
                             const Encode& encode, Room& room) {
  room.fvCodes.resize(part.fNCases * NBScaledProducts::kTogether);
  bool areAllValid = false;  // a case at least once, so that there is no more to note
  for (std::size_t first = 0; first < inputs.size(); first += NBScaledProducts::kTogether) {
    const std::size_t n = std::min(NBScaledProducts::kTogether, inputs.size() - first);
    for (std::size_t j = 0; j < n; ++j) {
      const std::span codes(&room.fvCodes[j * part.fNCases], part.fNCases);
      const std::int32_t lowest =
          encode(static_cast<int>(first + j), part.fFirst, part.fNCases, codes.data());
      if (!areAllValid || lowest < INBEncoder::kMissingCode) {
        NoteMissing(codes, lowest, part.fFirst);
      }
      areAllValid = areAllValid || lowest >= 0;
    }
    room.fProducts.Multiply(std::span(inputs).subspan(first, n), room.fvCodes.data());
  }
  room.fProducts.Align();
}

void NBScoredBlock::NoteMissing(std::span<const std::int32_t> codes, std::int32_t lowest,
                                std::size_t first) {
  for (std::size_t i = 0; i < codes.size(); ++i) {
    fvHasValid[first + i] |= codes[i] != INBEncoder::kMissingCode;
  }
  if (lowest >= INBEncoder::kMissingCode) return;
  for (std::size_t i = 0; i < codes.size(); ++i) {
    fvOutOfRange[first + i] |= codes[i] < INBEncoder::kMissingCode;
  }
}

void NBScoredBlock::Decide(const NBayesOutput& output, const NBCalibration& calibration,
                           const Part& part, const NBScaledProducts& products) {
  for (std::size_t i = 0; i < part.fNCases; ++i) {
    const std::size_t place = part.fFirst + i;
    const std::span probabilities(&fvProbabilities[place * fNTargets], fNTargets);
    const int winner = NBScoring::Decide(products, i, output, calibration, probabilities);
    fvWinners[place] = fvOutOfRange[place] != 0 ? -1 : winner;
  }
}

std::int64_t NBScoredBlock::GetWarning(std::size_t i) const {
  if (fvOutOfRange[i] != 0) return MCNaive::kCodeOutOfRange;
  if (fvHasValid[i] == 0) return MCNaive::kAllInputsMissing;
  return 0;
}
