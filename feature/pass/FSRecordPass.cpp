#include "feature/pass/FSRecordPass.h"

#include <algorithm>
#include <cmath>

#include "common/MissingValue.h"
#include "common/Progress.h"
#include "feature/FSReporter.h"
#include "feature/FSSettings.h"
#include "feature/FSStopwatch.h"
#include "feature/accumulators/FSWalkBlock.h"
#include "feature/pass/FSCounts.h"

namespace {

// Column of the record, or null when the record has no such column.
const double* ColumnOf(const MCCommon::RecordBlock& block, int position) {
  return position >= 0 && static_cast<std::size_t>(position) < block.Columns()
             ? block.Column(static_cast<std::size_t>(position))
             : nullptr;
}

}  // namespace

FSRecordPass::FSRecordPass(FSCounts& counts, const FSSettings& settings, bool withTarget)
    : fCounts(counts), fSettings(settings), fbWithTarget(withTarget) {}

void FSRecordPass::Run(MCCommon::RecordIterator& source, int maxRecords, FSCancelInfo& cancel,
                       const FSStopwatch& watch) {
  ProgressListener* listener = fSettings.GetProgressListener();
  const std::int64_t interval = std::int64_t{fSettings.GetNSkippedRecordReports()} + 1;
  int left = fCounts.CasesLeft(maxRecords);
  std::int64_t untilReport = interval;
  int records = 0;
  while (left > 0 && !cancel.IsCancel()) {
    // A block never goes beyond the next report, so that reports come at the right record.
    const std::int64_t most =
        listener != nullptr ? std::min<std::int64_t>(left, untilReport) : left;
    const MCCommon::RecordBlock& block = source.NextBlock(
        std::min(static_cast<std::size_t>(most), FSCasesBetweenPolls(fCounts.Size())));
    if (block.Cases() == 0) break;
    const int counted = Take(block);
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
}

int FSRecordPass::Take(const MCCommon::RecordBlock& block) {
  const int counted = SelectCases(block);
  fHasValid.assign(fChosen.size(), 0);
  if (!fChosen.empty()) {
    FSCaseBlock cases = ChosenCases();
    TakePredictors(block, cases);
  }
  CountCases();
  return counted;
}

int FSRecordPass::SelectCases(const MCCommon::RecordBlock& block) {
  const double* weights = ColumnOf(block, fSettings.GetWeightPosition());
  const double* targets = ColumnOf(block, fSettings.GetTargetPosition());
  ForgetCases();
  int counted = 0;
  for (std::size_t i = 0; i < block.Cases(); ++i) {
    double weight = 1.0;
    if (fSettings.GetWeightPosition() >= 0 && !ReadWeight(weights, i, weight)) continue;
    ++counted;
    const double target = targets != nullptr ? targets[i] : MCMV::gMissingValue;
    if (fbWithTarget && !IsValidTarget(target)) {
      fCounts.CountExcluded(weight);
      continue;
    }
    Choose(i, weight, target);
  }
  return counted;
}

void FSRecordPass::ForgetCases() {
  fChosen.clear();
  fWeights.clear();
  fWeightsBefore.clear();
  fShares.clear();
  fTargets.clear();
  fTargetCategories.clear();
}

bool FSRecordPass::ReadWeight(const double* weights, std::size_t i, double& weight) {
  if (weights == nullptr || MCMV::IsMissing(weights[i])) return false;
  weight = MCFSCommon::ToFrequency(fSettings.GetWeightToFreq(), weights[i]);
  if (!(weight > 0.0)) return false;
  fCounts.SeeValidWeight();
  return true;
}

bool FSRecordPass::IsValidTarget(double target) const {
  return fSettings.IsCatTarget() ? FSIsValidCategory(target) : FSIsValidNumber(target);
}

void FSRecordPass::Choose(std::size_t i, double weight, double target) {
  fChosen.push_back(static_cast<std::uint32_t>(i));
  fWeights.push_back(weight);
  fWeightsBefore.push_back(fTotal);
  fShares.push_back(weight / (fTotal + weight));
  fTotal += weight;
  constexpr double kExactTo = 9007199254740992.0;
  fbWholeWeights = fbWholeWeights && weight == std::floor(weight) && fTotal <= kExactTo;
  fTargets.push_back(target);
  if (fbWithTarget && fSettings.IsCatTarget()) fTargetCategories.push_back(FSCategory(target));
}

FSCaseBlock FSRecordPass::ChosenCases() {
  return {.fNCases = fChosen.size(),
          .fpTargets = fTargets.data(),
          .fpTargetCategories = fTargetCategories.data(),
          .fTargetSide = TargetSide(),
          .fpWeights = fWeights.data(),
          .fbWholeWeights = fbWholeWeights,
          .fpWeightsBefore = fWeightsBefore.data(),
          .fpShares = fShares.data(),
          .fpHasValid = fHasValid.data()};
}

// One more than the largest target category when all are small, else 0.
int FSRecordPass::TargetSide() const {
  constexpr int kMost = 64;
  if (fTargetCategories.empty()) return 0;
  const auto [low, high] = std::minmax_element(fTargetCategories.begin(), fTargetCategories.end());
  return *low >= 0 && *high < kMost ? *high + 1 : 0;
}

void FSRecordPass::TakePredictors(const MCCommon::RecordBlock& block, FSCaseBlock& cases) {
  int column = 0;
  for (std::size_t j = 0; j < fCounts.Size(); ++j, ++column) {
    while (IsReserved(column)) ++column;
    if (static_cast<std::size_t>(column) >= block.Columns()) return;
    IFSPredTargetAccum* accumulator = fCounts.At(j);
    if (accumulator == nullptr) continue;
    const double* cells = ChosenCells(block, column);
    if (fbWithTarget == fCounts.IsOfPairs()) {
      accumulator->AddBlock(cells, cases);
    } else {
      TakeMissing(*accumulator, cells);
    }
    // Usually the first predictor has set them all, and the others need not store them again.
    if (cases.fpHasValid != nullptr && HaveAllValid()) cases.fpHasValid = nullptr;
  }
}

// An accumulator of an earlier pass of the other kind, with or without target, takes no values.
void FSRecordPass::TakeMissing(IFSPredTargetAccum& accumulator, const double* cells) {
  for (std::size_t k = 0; k < fChosen.size(); ++k) {
    const bool valid =
        accumulator.IsCategorical() ? FSIsValidCategory(cells[k]) : FSIsValidNumber(cells[k]);
    if (valid) fHasValid[k] = 1;
    if (!valid) accumulator.AddMissing(fWeights[k]);
  }
}

bool FSRecordPass::IsReserved(int column) const {
  return column == fSettings.GetTargetPosition() || column == fSettings.GetCaseIDPosition() ||
         column == fSettings.GetWeightPosition();
}

const double* FSRecordPass::ChosenCells(const MCCommon::RecordBlock& block, int column) {
  const double* cells = block.Column(static_cast<std::size_t>(column));
  if (fChosen.size() == block.Cases()) return cells;
  fCells.resize(fChosen.size());
  for (std::size_t k = 0; k < fChosen.size(); ++k) fCells[k] = cells[fChosen[k]];
  return fCells.data();
}

bool FSRecordPass::HaveAllValid() const {
  return std::find(fHasValid.begin(), fHasValid.end(), 0) == fHasValid.end();
}

void FSRecordPass::CountCases() {
  for (std::size_t k = 0; k < fChosen.size(); ++k) {
    if (fHasValid[k] != 0) {
      fCounts.CountValid(fWeights[k], fTargets[k], fbWithTarget);
    } else {
      fCounts.CountExcluded(fWeights[k]);
    }
  }
}
