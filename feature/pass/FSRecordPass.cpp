#include "feature/pass/FSRecordPass.h"

#include <algorithm>

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
  if (fNChosen == 0) return counted;
  fHasValid.assign(fNChosen, 0);
  FSCaseBlock cases = ChosenCases();
  TakePredictors(block, cases);
  CountCases();
  return counted;
}

int FSRecordPass::SelectCases(const MCCommon::RecordBlock& block) {
  const double* weights = ColumnOf(block, fSettings.GetWeightPosition());
  const double* targets = ColumnOf(block, fSettings.GetTargetPosition());
  const bool weighted = fSettings.GetWeightPosition() >= 0;
  int counted = 0;
  fNChosen = 0;
  MakeRoom(block.Cases());
  for (std::size_t i = 0; i < block.Cases(); ++i) {
    double weight = 1.0;
    if (weighted && !ReadWeight(weights, i, weight)) continue;
    ++counted;
    const double target = targets != nullptr ? targets[i] : MCMV::gMissingValue;
    if (fbWithTarget && !IsValidTarget(target)) {
      fCounts.CountExcluded(weight);
      continue;
    }
    Choose(i, weight, target);
  }
  MakeRoom(fNChosen);
  return counted;
}

void FSRecordPass::MakeRoom(std::size_t cases) {
  fChosen.resize(cases);
  fWeights.resize(cases);
  fTargets.resize(cases);
  if (fSettings.IsCatTarget()) fTargetCategories.resize(cases);
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
  fChosen[fNChosen] = static_cast<std::uint32_t>(i);
  fWeights[fNChosen] = weight;
  fTargets[fNChosen] = target;
  if (fbWithTarget && fSettings.IsCatTarget()) fTargetCategories[fNChosen] = FSCategory(target);
  fbUnitWeights = fbUnitWeights && weight == 1.0;
  ++fNChosen;
}

FSCaseBlock FSRecordPass::ChosenCases() {
  FSCaseBlock cases{.fNCases = fNChosen,
                    .fpTargets = fTargets.data(),
                    .fpTargetCategories = fTargetCategories.data(),
                    .fpWeights = fWeights.data(),
                    .fbUnitWeights = fbUnitWeights,
                    .fpHasValid = fHasValid.data()};
  if (!fbUnitWeights || !fbWithTarget) return cases;
  if (fSettings.IsCatTarget()) {
    fTargetView.ShowCategories(fTargetCategories, cases);
  } else {
    fTargetView.ShowValues(fTargets, cases);
  }
  return cases;
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
  for (std::size_t k = 0; k < fNChosen; ++k) {
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
  if (fNChosen == block.Cases()) return cells;
  fCells.resize(fNChosen);
  for (std::size_t k = 0; k < fNChosen; ++k) fCells[k] = cells[fChosen[k]];
  return fCells.data();
}

bool FSRecordPass::HaveAllValid() const {
  return std::find(fHasValid.begin(), fHasValid.end(), 0) == fHasValid.end();
}

void FSRecordPass::CountCases() {
  if (fbUnitWeights && fCounts.HasWholeWeights() && HaveAllValid()) {
    fCounts.CountUnitCases(fNChosen);
    if (fbWithTarget && fSettings.IsCatTarget()) CountTargets();
    return;
  }
  for (std::size_t k = 0; k < fNChosen; ++k) {
    if (fHasValid[k] != 0) {
      fCounts.CountValid(fWeights[k], fTargets[k], fbWithTarget);
    } else {
      fCounts.CountExcluded(fWeights[k]);
    }
  }
}

void FSRecordPass::CountTargets() {
  for (const FSTargetRun& run : fTargetView.GetRuns()) {
    fCounts.CountTarget(run.fCategory, static_cast<int>(run.fEnd - run.fBegin));
  }
  for (const std::uint32_t i : fTargetView.GetOthers())
    fCounts.CountTarget(fTargetCategories[i], 1);
}
