// Scoring: single records, and whole samples in blocks.
#include <algorithm>

#include "common/MissingValue.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/model/NBScaledProducts.h"
#include "naivebayes/model/NBScoring.h"
#include "naivebayes/store/NBCodeBlock.h"

using MCCommon::MultiPassRecordIter;
using MCCommon::Record;
using MCCommon::RecordBlock;
using MCCommon::RecordIterator;
using MCNaive::MCStatus;

// Room for the codes of a block of records to classify.
struct NBAlgorithm::ScoreBlock {
  std::vector<std::int32_t> fvTargets;
  std::vector<std::int32_t> fvCodes;
  std::vector<double> fvWeights;
  std::vector<char> fvOutOfRange;
  std::vector<double> fvProbabilities;
  NBScaledProducts fProducts;
};

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

int NBAlgorithm::SelectWinner(const std::vector<double>& probabilities) const {
  return NBScoring::SelectWinner(probabilities, fOutput);
}

MCStatus NBAlgorithm::FinishScore(const MCStatus& encoded, const std::vector<std::int32_t>& codes,
                                  NBOutput& output) const {
  // Without a valid input there is no factor, and what is normalised are the priors.
  if (!encoded.IsOK() && encoded.GetErrorCode() != MCNaive::kAllInputsMissing) return encoded;
  std::vector<double> probabilities;
  ComputePosteriors(codes, probabilities);
  output.SetOutputs(probabilities, SelectWinner(probabilities));
  return encoded;
}

MCStatus NBAlgorithm::Score(const Record& inputs, NBOutput& output) const {
  if (fStatus.IsError()) return fStatus;
  if (fbBuilt && static_cast<int>(inputs.Size()) != fVarList.GetNumInputVars()) {
    return MCNaive::Error(MCNaive::kWrongRecordSize);
  }
  if (!fpPreparator) return MCNaive::Error(MCNaive::kNoPreparator);
  std::vector<std::int32_t> codes;
  const MCStatus encoded = fpPreparator->ProcessInputs(inputs, codes);
  return FinishScore(encoded, codes, output);
}

MCStatus NBAlgorithm::ScoreFullRecord(const Record& record, NBOutput& output) const {
  if (fStatus.IsError()) return fStatus;
  if (!fpPreparator) return MCNaive::Error(MCNaive::kNoPreparator);
  std::vector<std::int32_t> codes;
  double weight = 1.0;
  const MCStatus encoded = fpPreparator->ProcessInputsFromRecord(record, codes, weight);
  return FinishScore(encoded, codes, output);
}

MCStatus NBAlgorithm::ScoreAndAccum(const Record& record, NBOutput& output, bool isTraining) {
  const MCStatus scored = ScoreFullRecord(record, output);
  if (scored.IsError() ||
      (scored.IsWarning() && scored.GetErrorCode() == MCNaive::kCodeOutOfRange)) {
    return scored;
  }
  std::int32_t target;
  const double value = record[fpPreparator->GetTargetColumn()];
  fpPreparator->EncodeTargets(&value, 1, &target);
  double weight = 1.0;
  const int column = fpPreparator->GetWeightColumn();
  if (column >= 0) {
    const double given = record[column];
    fpPreparator->EncodeWeights(&given, 1, &weight);
  }
  if (target < 0 || MCMV::IsMissing(weight)) return scored;
  auto& stats = isTraining ? fTrainStats : fTestStats;
  if (!stats) stats.emplace(fOutput.GetNCategories());
  stats->Accumulate(target, output.GetWinningIndex(), weight);
  return scored;
}

MCStatus NBAlgorithm::ClassifyBlock(const RecordBlock& block, ScoreBlock& scratch,
                                    NBOutputStatistics& stats, int& nAccepted) const {
  if (static_cast<int>(block.Columns()) < fpPreparator->GetOriginalSize()) {
    return MCNaive::Error(MCNaive::kWrongRecordSize);
  }
  const std::size_t cases = block.Cases();
  scratch.fvTargets.resize(cases);
  scratch.fvCodes.resize(cases);
  scratch.fvWeights.assign(cases, 1.0);
  scratch.fvOutOfRange.assign(cases, 0);
  fpPreparator->EncodeTargets(block.Column(fpPreparator->GetTargetColumn()), cases,
                              scratch.fvTargets.data());
  const int weight = fpPreparator->GetWeightColumn();
  if (weight >= 0) {
    fpPreparator->EncodeWeights(block.Column(weight), cases, scratch.fvWeights.data());
  }
  scratch.fProducts.Reset(fOutput.GetPriors(), cases);
  for (int j = 0; j < fNInputs; ++j) {
    fpPreparator->EncodeInputs(j, block.Column(fpPreparator->GetInputColumn(j)), cases,
                               scratch.fvCodes.data());
    for (std::size_t i = 0; i < cases; ++i) {
      scratch.fvOutOfRange[i] |= scratch.fvCodes[i] == NBDataPreparator::kOutOfRange;
    }
    scratch.fProducts.Multiply(fInputs[j], scratch.fvCodes.data());
  }
  scratch.fProducts.Align();
  scratch.fvProbabilities.resize(fOutput.GetNCategories());
  for (std::size_t i = 0; i < cases && !fCancel.IsCancel(); ++i) {
    if (scratch.fvOutOfRange[i] != 0 || scratch.fvTargets[i] < 0) continue;
    if (MCMV::IsMissing(scratch.fvWeights[i])) continue;
    NBScoring::Normalize(scratch.fProducts, i, scratch.fvProbabilities);
    stats.Accumulate(scratch.fvTargets[i], SelectWinner(scratch.fvProbabilities),
                     scratch.fvWeights[i]);
    ++nAccepted;
  }
  return {};
}

MCStatus NBAlgorithm::ComputeOutputStats(RecordIterator& records, NBOutputStatistics& stats,
                                         int limit) const {
  if (fStatus.IsError()) return fStatus;
  if (!fpPreparator) return MCNaive::Error(MCNaive::kNoPreparator);
  if (limit == 0 || !records.HasMore()) return MCNaive::Error(MCNaive::kNoRecordsToProcess);
  stats.Reset(fOutput.GetNCategories());
  ScoreBlock scratch;
  MCStatus status;
  int nAccepted = 0;
  while ((limit < 0 || nAccepted < limit) && !fCancel.IsCancel() && !status.IsError()) {
    // Never more cases than may still be accepted, as if they were read one by one.
    const std::size_t wanted =
        limit < 0 ? RecordBlock::kMaxCases
                  : std::min<std::size_t>(RecordBlock::kMaxCases, limit - nAccepted);
    const RecordBlock& block = records.NextBlock(wanted);
    if (block.Cases() == 0) break;
    status = ClassifyBlock(block, scratch, stats, nAccepted);
  }
  if (!status.IsError() && records.GetFailReason() == RecordIterator::kReadError) {
    status = MCNaive::Error(MCNaive::kSourceFailed);
  }
  auto* again = dynamic_cast<MultiPassRecordIter*>(&records);
  if (again != nullptr && !again->NewPass() && !status.IsError()) {
    status = MCNaive::Error(MCNaive::kSourceFailed);
  }
  return fCancel.IsCancel() ? MCNaive::Error(MCNaive::kCancelled) : status;
}
