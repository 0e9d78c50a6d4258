// Scoring: single records, and whole samples in blocks.
#include <algorithm>

#include "common/MissingValue.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/NBWithinMemory.h"
#include "naivebayes/model/NBScaledProducts.h"
#include "naivebayes/model/NBScoredBlock.h"
#include "naivebayes/model/NBScoring.h"
#include "naivebayes/store/NBCodeBlock.h"

using MCCommon::MultiPassRecordIter;
using MCCommon::Record;
using MCCommon::RecordBlock;
using MCCommon::RecordIterator;
using MCNaive::MCStatus;

double NBAlgorithm::ComputePXYPY(const Record& codes, int k) const {
  double product = fOutput.GetPriors()[k];
  for (std::size_t j = 0; j < fInputs.size(); ++j) {
    product *= fInputs[j].GetFactors(CategoryOf(codes[j], NBCodeBlock::kCountingOffset))[k];
  }
  return product;
}

void NBAlgorithm::ComputeOutProbabilities(const Record& codes, int categories,
                                          std::vector<double>& out) const {
  std::vector<std::int32_t> integers;
  for (const double code : codes.GetAll()) {
    integers.push_back(CategoryOf(code, NBCodeBlock::kCountingOffset));
  }
  ComputePosteriors(integers, out);
  if (static_cast<int>(out.size()) == categories) return;
  out.resize(categories);
  NBScoring::Normalize(out);
}

void NBAlgorithm::ComputePosteriors(const std::vector<std::int32_t>& codes,
                                    std::vector<double>& out) const {
  out = fOutput.GetPriors();
  if (NBScaledProducts::MultiplyPlain(fInputs, codes.data(), out)) {
    NBScoring::Normalize(out);
    return;
  }
  NBScaledProducts products;
  products.Reset(fOutput.GetPriors(), 1);
  for (std::size_t j = 0; j < fInputs.size(); ++j) products.Multiply(fInputs[j], &codes[j]);
  products.Align();
  NBScoring::Normalize(products, 0, out);
}

int NBAlgorithm::ComputeCalibrated(const std::vector<std::int32_t>& codes,
                                   std::vector<double>& out) const {
  NBScaledProducts products;
  products.Reset(fOutput.GetPriors(), 1);
  for (std::size_t j = 0; j < fInputs.size(); ++j) products.Multiply(fInputs[j], &codes[j]);
  products.Align();
  out.resize(products.Categories());
  return NBScoring::Decide(products, 0, fOutput, fCalibration, out);
}

int NBAlgorithm::SelectWinner(const std::vector<double>& probabilities) const {
  return NBScoring::SelectWinner(probabilities, fOutput);
}

void NBAlgorithm::EncodeInput(int input, const RecordBlock& block, std::int32_t* codes) const {
  const double* values = block.Column(fpPreparator->GetInputColumn(input));
  (void)fpPreparator->EncodeInputs(input, values, block.Cases(), codes);
}

void NBAlgorithm::EncodeCases(const RecordBlock& block, std::int32_t* targets,
                              double* weights) const {
  const std::size_t cases = block.Cases();
  std::fill_n(weights, cases, 1.0);
  fpPreparator->EncodeTargets(block.Column(fpPreparator->GetTargetColumn()), cases, targets);
  const int weight = fpPreparator->GetWeightColumn();
  if (weight >= 0) fpPreparator->EncodeWeights(block.Column(weight), cases, weights);
}

MCStatus NBAlgorithm::FinishScore(const MCStatus& encoded, const std::vector<std::int32_t>& codes,
                                  NBOutput& output) const {
  // Without a valid input there is no factor, and what is normalised are the priors.
  if (!encoded.IsOK() && encoded.GetErrorCode() != MCNaive::kAllInputsMissing) return encoded;
  std::vector<double> probabilities;
  if (fCalibration.GetMethod() != NBCalibration::kNone) {
    const int winner = ComputeCalibrated(codes, probabilities);
    output.SetOutputs(probabilities, winner);
    return encoded;
  }
  ComputePosteriors(codes, probabilities);
  output.SetOutputs(probabilities, SelectWinner(probabilities));
  return encoded;
}

MCStatus NBAlgorithm::Score(const Record& inputs, NBOutput& output) const {
  return MCNaive::WithinMemory([&] { return DoScore(inputs, output); });
}

MCStatus NBAlgorithm::ScoreFullRecord(const Record& record, NBOutput& output) const {
  return MCNaive::WithinMemory([&] { return DoScoreFull(record, output); });
}

MCStatus NBAlgorithm::ScoreBlock(const RecordBlock& block, NBScoredBlock& scored) const {
  return MCNaive::WithinMemory([&] { return DoScoreBlock(block, scored); });
}

MCStatus NBAlgorithm::ComputeOutputStats(RecordIterator& records, NBOutputStatistics& stats,
                                         int limit) const {
  const MCStatus status =
      MCNaive::WithinMemory([&] { return DoComputeStats(records, stats, limit); });
  return fCancel.TakeCancel() ? MCNaive::Error(MCNaive::kCancelled) : status;
}

MCStatus NBAlgorithm::DoScore(const Record& inputs, NBOutput& output) const {
  if (fStatus.IsError()) return fStatus;
  if (fbBuilt && static_cast<int>(inputs.Size()) != fVarList.GetNumInputVars()) {
    return MCNaive::Error(MCNaive::kWrongRecordSize);
  }
  if (!fpPreparator) return MCNaive::Error(MCNaive::kNoPreparator);
  std::vector<std::int32_t> codes;
  const MCStatus encoded = fpPreparator->ProcessInputs(inputs, codes);
  return FinishScore(encoded, codes, output);
}

MCStatus NBAlgorithm::DoScoreFull(const Record& record, NBOutput& output) const {
  if (fStatus.IsError()) return fStatus;
  if (!fpPreparator) return MCNaive::Error(MCNaive::kNoPreparator);
  std::vector<std::int32_t> codes;
  double weight = 1.0;
  const MCStatus encoded = fpPreparator->ProcessInputsFromRecord(record, codes, weight);
  return FinishScore(encoded, codes, output);
}

NBOutputStatistics& NBAlgorithm::StatsOf(bool isTraining) {
  auto& stats = isTraining ? fTrainStats : fTestStats;
  if (!stats) stats.emplace(fOutput.GetNCategories());
  return *stats;
}

template <typename Choose>
int NBAlgorithm::Classify(const RecordBlock& block, const std::int32_t* winners,
                          Choose statsOf) const {
  const std::size_t cases = block.Cases();
  std::vector<std::int32_t> targets(cases);
  std::vector<double> weights(cases);
  EncodeCases(block, targets.data(), weights.data());
  int nCounted = 0;
  for (std::size_t i = 0; i < cases; ++i) {
    if (winners[i] < 0 || targets[i] < 0 || MCMV::IsMissing(weights[i])) continue;
    statsOf(i).Accumulate(targets[i], winners[i], weights[i]);
    ++nCounted;
  }
  return nCounted;
}

MCStatus NBAlgorithm::ScoreAndAccum(const Record& record, NBOutput& output, bool isTraining) {
  return Changed(MCNaive::WithinMemory([&] {
    const MCStatus scored = DoScoreFull(record, output);
    if (scored.IsError() || scored.GetErrorCode() == MCNaive::kCodeOutOfRange) return scored;
    RecordBlock block;
    block.Reset(record.Size(), 1);
    for (std::size_t j = 0; j < record.Size(); ++j) block.SetColumn(j, &record.GetAll()[j]);
    const std::int32_t winner = output.GetWinningIndex();
    Classify(
        block, &winner, [&](std::size_t) -> auto& { return StatsOf(isTraining); });
    return scored;
  }));
}

MCStatus NBAlgorithm::DoScoreBlock(const RecordBlock& block, NBScoredBlock& scored) const {
  if (fStatus.IsError()) return fStatus;
  if (!fpPreparator) return MCNaive::Error(MCNaive::kNoPreparator);
  if (static_cast<int>(block.Columns()) < fpPreparator->GetOriginalSize()) {
    return MCNaive::Error(MCNaive::kWrongRecordSize);
  }
  const auto encode = [this, &block](int j, std::size_t first, std::size_t cases,
                                     std::int32_t* codes) {
    const double* values = block.Column(fpPreparator->GetInputColumn(j));
    return fpPreparator->EncodeInputs(j, values + first, cases, codes);
  };
  scored.Score(fOutput, fInputs, fCalibration, block.Cases(), encode);
  return {};
}

MCStatus NBAlgorithm::ScoreAndAccumBlock(const RecordBlock& block, NBScoredBlock& scored,
                                         const std::vector<char>& isTraining) {
  return Changed(MCNaive::WithinMemory([&] {
    const MCStatus status = DoScoreBlock(block, scored);
    if (status.IsError()) return status;
    Classify(
        block, scored.GetWinners().data(), [&](std::size_t i) -> auto& {
          return StatsOf(isTraining[i] != 0);
        });
    return status;
  }));
}

MCStatus NBAlgorithm::DoComputeStats(RecordIterator& records, NBOutputStatistics& stats,
                                     int limit) const {
  if (fStatus.IsError()) return fStatus;
  if (!fpPreparator) return MCNaive::Error(MCNaive::kNoPreparator);
  if (limit == 0 || !records.HasMore()) return MCNaive::Error(MCNaive::kNoRecordsToProcess);
  stats.Reset(fOutput.GetNCategories());
  const std::size_t most = NBScoredBlock::PreferredCases(fOutput.GetNCategories(), fNInputs);
  NBScoredBlock scored(fSettings.GetNThreads());
  MCStatus status;
  int nAccepted = 0;
  while ((limit < 0 || nAccepted < limit) && !fCancel.IsCancel()) {
    // Never more cases than may still be accepted, as if they were read one by one.
    const std::size_t wanted = limit < 0 ? most : std::min<std::size_t>(most, limit - nAccepted);
    const RecordBlock& block = records.NextBlock(wanted);
    if (block.Cases() == 0) break;
    status = DoScoreBlock(block, scored);
    if (status.IsError()) break;
    nAccepted += Classify(
        block, scored.GetWinners().data(), [&](std::size_t) -> auto& { return stats; });
  }
  if (!status.IsError() && records.GetFailReason() == RecordIterator::kReadError) {
    status = MCNaive::Error(MCNaive::kSourceFailed);
  }
  auto* again = dynamic_cast<MultiPassRecordIter*>(&records);
  if (again != nullptr && !again->NewPass() && !status.IsError()) {
    status = MCNaive::Error(MCNaive::kSourceFailed);
  }
  return status;
}
