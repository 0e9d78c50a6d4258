// The data passes of FSPredictorSet.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "common/MissingValue.h"
#include "common/Progress.h"
#include "feature/FSSettings.h"
#include "feature/accumulators/FSCaseBlock.h"
#include "feature/accumulators/FSWalkBlock.h"
#include "feature/ranking/FSPredictorSet.h"
#include "feature/ranking/FSReporter.h"
#include "feature/ranking/FSStopwatch.h"

using namespace MCFSCommon;
using MCFeature::MCStatus;

// Takes blocks of records into a set: decides once per case on weight and target, then gives each
// predictor its column of the cases that remain.
class FSPredictorSet::BlockPass {
 public:
  BlockPass(FSPredictorSet& set, bool withTarget)
      : fSet(set), fSettings(*set.fpSettings), fbWithTarget(withTarget) {}

  // Returns the number of cases with a valid weight.
  int Take(const MCCommon::RecordBlock& block) {
    const int counted = SelectCases(block);
    fHasValid.assign(fChosen.size(), 0);
    fCases.fNCases = fChosen.size();
    fCases.fpTargets = fTargets.data();
    fCases.fpTargetCategories = fTargetCategories.data();
    fCases.fTargetSide = TargetSide();
    fCases.fpWeights = fWeights.data();
    fCases.fpWeightsBefore = fWeightsBefore.data();
    fCases.fpShares = fShares.data();
    fCases.fpTargetMeans = fTargetMeans.data();
    fCases.fpHasValid = fHasValid.data();
    if (!fChosen.empty()) TakePredictors(block);
    CountCases();
    return counted;
  }

 private:
  // Column of the record, or null when the record has no such column.
  static const double* ColumnOf(const MCCommon::RecordBlock& block, int position) {
    return position >= 0 && static_cast<std::size_t>(position) < block.Columns()
               ? block.Column(static_cast<std::size_t>(position))
               : nullptr;
  }

  int SelectCases(const MCCommon::RecordBlock& block) {
    const double* weights = ColumnOf(block, fSettings.GetWeightPosition());
    const double* targets = ColumnOf(block, fSettings.GetTargetPosition());
    fChosen.clear();
    fWeights.clear();
    fWeightsBefore.clear();
    fShares.clear();
    fTargets.clear();
    fTargetCategories.clear();
    fTargetMeans.clear();
    fCases.fTargetMeanBefore = fTargetMean;
    int counted = 0;
    for (std::size_t i = 0; i < block.Cases(); ++i) {
      double weight = 1.0;
      if (fSettings.GetWeightPosition() >= 0 && !ReadWeight(weights, i, weight)) continue;
      ++counted;
      const double target = targets != nullptr ? targets[i] : MCMV::gMissingValue;
      if (fbWithTarget && !IsValidTarget(target)) {
        fSet.CountCase(weight, target, fbWithTarget, false);
        continue;
      }
      Choose(i, weight, target);
    }
    return counted;
  }

  bool ReadWeight(const double* weights, std::size_t i, double& weight) {
    if (weights == nullptr || MCMV::IsMissing(weights[i])) return false;
    weight = ToFrequency(fSettings.GetWeightToFreq(), weights[i]);
    if (!(weight > 0.0)) return false;
    fSet.fbNoValidWeight = false;
    return true;
  }

  bool IsValidTarget(double target) const {
    return fSettings.IsCatTarget() ? FSIsValidCategory(target) : FSIsValidNumber(target);
  }

  void Choose(std::size_t i, double weight, double target) {
    fChosen.push_back(static_cast<std::uint32_t>(i));
    fWeights.push_back(weight);
    fWeightsBefore.push_back(fTotal);
    fShares.push_back(weight / (fTotal + weight));
    fTotal += weight;
    fTargets.push_back(target);
    if (!fbWithTarget) return;
    if (fSettings.IsCatTarget()) {
      fTargetCategories.push_back(FSCategory(target));
    } else {
      fTargetMean += fShares.back() * (target - fTargetMean);
      fTargetMeans.push_back(fTargetMean);
    }
  }

  // One more than the largest target category when all are small, else 0.
  int TargetSide() const {
    constexpr int kMost = 64;
    if (fTargetCategories.empty()) return 0;
    const auto [low, high] =
        std::minmax_element(fTargetCategories.begin(), fTargetCategories.end());
    return *low >= 0 && *high < kMost ? *high + 1 : 0;
  }

  void TakePredictors(const MCCommon::RecordBlock& block) {
    int column = 0;
    for (const auto& accumulator : fSet.fAccumulators) {
      while (IsReserved(column)) ++column;
      if (static_cast<std::size_t>(column) >= block.Columns()) return;
      if (accumulator) {
        const double* cells = ChosenCells(block, column);
        if (fbWithTarget == fSet.fbWithTarget) {
          accumulator->AddBlock(cells, fCases);
        } else {
          TakeMissing(*accumulator, cells);
        }
        DropFlagsOnceAllSet();
      }
      ++column;
    }
  }

  // An accumulator of an earlier pass of the other kind, with or without target, takes no values.
  void TakeMissing(IFSPredTargetAccum& accumulator, const double* cells) {
    for (std::size_t k = 0; k < fChosen.size(); ++k) {
      const bool valid =
          accumulator.IsCategorical() ? FSIsValidCategory(cells[k]) : FSIsValidNumber(cells[k]);
      if (valid) fHasValid[k] = 1;
      if (!valid) accumulator.AddMissing(fWeights[k]);
    }
  }

  bool IsReserved(int column) const {
    return column == fSettings.GetTargetPosition() || column == fSettings.GetCaseIDPosition() ||
           column == fSettings.GetWeightPosition();
  }

  const double* ChosenCells(const MCCommon::RecordBlock& block, int column) {
    const double* cells = block.Column(static_cast<std::size_t>(column));
    if (fChosen.size() == block.Cases()) return cells;
    fCells.resize(fChosen.size());
    for (std::size_t k = 0; k < fChosen.size(); ++k) fCells[k] = cells[fChosen[k]];
    return fCells.data();
  }

  // Usually the first predictor has set them all, and the others need not store them again.
  void DropFlagsOnceAllSet() {
    if (fCases.fpHasValid == nullptr) return;
    if (std::find(fHasValid.begin(), fHasValid.end(), 0) == fHasValid.end()) {
      fCases.fpHasValid = nullptr;
    }
  }

  void CountCases() {
    for (std::size_t k = 0; k < fChosen.size(); ++k) {
      fSet.CountCase(fWeights[k], fTargets[k], fbWithTarget, fHasValid[k] != 0);
    }
  }

  FSPredictorSet& fSet;
  const FSSettings& fSettings;
  bool fbWithTarget;
  std::vector<std::uint32_t> fChosen;  // positions in the block
  double fTotal = 0.0;                 // weight of all cases chosen so far
  std::vector<double> fWeights;
  std::vector<double> fWeightsBefore;
  std::vector<double> fShares;
  std::vector<double> fTargets;
  double fTargetMean = 0.0;
  std::vector<double> fTargetMeans;
  std::vector<int> fTargetCategories;
  std::vector<std::uint8_t> fHasValid;
  std::vector<double> fCells;
  FSCaseBlock fCases;
};

void FSPredictorSet::CountCase(double weight, double target, bool withTarget, bool valid) {
  if (!valid) {
    ++fNExcludedCases;
    fExcludedWeight += weight;
    return;
  }
  fbNoValidData = false;
  ++fNValidCases;
  fValidWeight += weight;
  if (withTarget && fpSettings->IsCatTarget()) {
    fTargetCategories.IncrementByFreq(FSCategory(target), weight);
  }
}

MCStatus FSPredictorSet::PassRecords(MCCommon::RecordIterator& source, int maxRecords) {
  return PassBlocks(source, maxRecords, fpSettings->GetTargetPosition() >= 0, false);
}

MCStatus FSPredictorSet::PassRecordsNoTarget(MCCommon::RecordIterator& source, int maxRecords) {
  return PassBlocks(source, maxRecords, false, true);
}

MCStatus FSPredictorSet::PassBlocks(MCCommon::RecordIterator& source, int maxRecords,
                                    bool withTarget, bool warn) {
  const FSStopwatch watch(fElapsed);
  StartPass(withTarget);
  ProgressListener* listener = fpSettings->GetProgressListener();
  const std::int64_t interval = std::int64_t{fpSettings->GetNSkippedRecordReports()} + 1;
  int left = CasesLeft(maxRecords);
  std::int64_t untilReport = interval;
  int records = 0;
  BlockPass pass(*this, withTarget);
  while (left > 0 && !fpCancel->IsCancel()) {
    // A block never goes beyond the next report, so that reports come at the right record.
    const std::int64_t most =
        listener != nullptr ? std::min<std::int64_t>(left, untilReport) : left;
    const MCCommon::RecordBlock& block = source.NextBlock(
        std::min(static_cast<std::size_t>(most), MCCommon::RecordBlock::kMaxCases));
    if (block.Cases() == 0) break;
    const int counted = pass.Take(block);
    left -= counted;
    records += counted;
    untilReport -= counted;
    if (listener != nullptr && untilReport == 0) {
      FSReporter reporter;
      reporter.SetNRecords(records, watch.Seconds());
      listener->Report(reporter);
      untilReport = interval;
    }
  }
  return EndOfPass(fpSettings->GetWeightPosition() >= 0, warn);
}

// A pass adds to what earlier ones gathered, and variances are to be computed again.
void FSPredictorSet::StartPass(bool withTarget) {
  AllocAccum(withTarget);
  fbPassCompleted = false;
}

// The limit of a pass: never more cases than can be counted.
int FSPredictorSet::CasesLeft(int maxRecords) const {
  const std::int64_t free =
      std::int64_t{std::numeric_limits<int>::max()} - fNValidCases - fNExcludedCases;
  const int most = static_cast<int>(std::max<std::int64_t>(free, 0));
  return maxRecords < 0 ? most : std::min(maxRecords, most);
}

MCStatus FSPredictorSet::EndOfPass(bool weighted, bool warn) {
  fStatus = kAccumulated;
  if (weighted && fbNoValidWeight) return {MCFeature::kNoValidWeight, warn};
  if (fbNoValidData) return {MCFeature::kAllCasesExcluded, warn};
  return {};
}

// Takes transactions into a set, case by case. Every case has weight 1.
class FSPredictorSet::TransactionPass {
 public:
  explicit TransactionPass(FSPredictorSet& set) : fSet(set) {}

  MCStatus Take(double caseID, double itemValue, double value, double target) {
    if (!fbInCase || caseID != fCaseID) {
      EndCase();
      StartCase(caseID, target);
    }
    const int item = MCMV::IsMissing(itemValue) ? -1 : FSCategory(itemValue + 0.5);
    if (item < 0 || item >= fSet.fNPredictors) {
      return Problem(MCFeature::kItemRange, item, fSet.fNPredictors);
    }
    if (item <= fLastItem) return Problem(MCFeature::kItemOrder, fLastItem, item);
    if (fbTargetValid) TakeItem(item, value);
    fLastItem = item;
    return {};
  }

  // The predictors that the current case has no item for are missing in it.
  void EndCase() {
    if (!fbInCase) return;
    if (fbTargetValid) SkipTo(fSet.fNPredictors);
    fSet.CountCase(1.0, fTarget, true, fbTargetValid && fbAnyValid);
    fbInCase = false;
  }

 private:
  void StartCase(double caseID, double target) {
    fbInCase = true;
    fCaseID = caseID;
    fTarget = target;
    fbTargetValid =
        fSet.fpSettings->IsCatTarget() ? FSIsValidCategory(target) : FSIsValidNumber(target);
    fbAnyValid = false;
    fLastItem = -1;
  }

  void SkipTo(int item) {
    for (int i = fLastItem + 1; i < item; ++i) {
      if (auto* accumulator = AccumulatorOf(i)) accumulator->AddMissing(1.0);
    }
  }

  void TakeItem(int item, double value) {
    SkipTo(item);
    IFSPredTargetAccum* accumulator = AccumulatorOf(item);
    if (accumulator == nullptr) return;
    const bool valid =
        accumulator->IsCategorical() ? FSIsValidCategory(value) : FSIsValidNumber(value);
    if (valid) {
      accumulator->AddCase(value, fTarget, 1.0, true);
      fbAnyValid = true;
    } else {
      accumulator->AddMissing(1.0);
    }
  }

  IFSPredTargetAccum* AccumulatorOf(int item) {
    return fSet.fAccumulators[static_cast<std::size_t>(item)].get();
  }

  // The case identifier as a whole number; 0 for one that is none.
  std::int64_t CaseNumber() const {
    constexpr double kMost = 9007199254740992.0;  // whole numbers beyond have gaps
    return std::fabs(fCaseID) <= kMost ? static_cast<std::int64_t>(fCaseID) : 0;
  }

  MCStatus Problem(MCFeature::StatusCode code, std::int64_t first, std::int64_t second) const {
    MCStatus status = MCFeature::Error(code);
    status.SetDiscreteDatum(0, first);
    status.SetDiscreteDatum(1, second);
    status.SetDiscreteDatum(2, CaseNumber());
    return status;
  }

  FSPredictorSet& fSet;
  bool fbInCase = false;
  double fCaseID = 0.0;
  double fTarget = 0.0;
  bool fbTargetValid = false;
  bool fbAnyValid = false;
  int fLastItem = -1;
};

MCStatus FSPredictorSet::PassTransactions(MCCommon::RecordIterator& source) {
  const FSStopwatch watch(fElapsed);
  StartPass(true);
  TransactionPass pass(*this);
  constexpr std::size_t kColumns = 4;
  while (!fpCancel->IsCancel()) {
    const MCCommon::RecordBlock& block = source.NextBlock(MCCommon::RecordBlock::kMaxCases);
    if (block.Cases() == 0 || block.Columns() < kColumns || CasesLeft(-1) < 2) break;
    // An open case is still to be counted, so the last number stays free for it.
    for (std::size_t i = 0; i < block.Cases() && CasesLeft(-1) >= 2; ++i) {
      const MCStatus status =
          pass.Take(block.Column(0)[i], block.Column(1)[i], block.Column(2)[i], block.Column(3)[i]);
      if (status.IsError()) return status;
    }
  }
  pass.EndCase();
  return EndOfPass(false, false);
}
