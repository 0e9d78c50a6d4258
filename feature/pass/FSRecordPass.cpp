#include "feature/pass/FSRecordPass.h"

#include <algorithm>
#include <cstring>

#include "common/MissingValue.h"
#include "common/Progress.h"
#include "feature/FSReporter.h"
#include "feature/FSSettings.h"
#include "feature/FSStopwatch.h"
#include "feature/accumulators/FSLoops.h"
#include "feature/accumulators/FSWalkBlock.h"
#include "feature/pass/FSCounts.h"

namespace {

// Column of the record, or null when the record has no such column.
const double* ColumnOf(const MCCommon::RecordBlock& block, int position) {
  return position >= 0 && static_cast<std::size_t>(position) < block.Columns()
             ? block.Column(static_cast<std::size_t>(position))
             : nullptr;
}

bool AreAllSet(const std::vector<std::uint8_t>& marks) {
  return std::memchr(marks.data(), 0, marks.size()) == nullptr;
}

}  // namespace

FSRecordPass::FSRecordPass(FSCounts& counts, const FSSettings& settings, bool withTarget,
                           MCCommon::Workers& workers)
    : fCounts(counts),
      fSettings(settings),
      fbWithTarget(withTarget),
      fbWeighted(settings.GetWeightPosition() >= 0),
      fWorkers(workers),
      fRooms(workers.Count()) {
  int column = 0;
  for (std::size_t j = 0; j < fCounts.Size(); ++j, ++column) {
    while (IsReserved(column)) ++column;
    fColumns.push_back(static_cast<std::size_t>(column));
  }
}

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
    const int counted = Take(block, cancel);
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

int FSRecordPass::Take(const MCCommon::RecordBlock& block, FSCancelInfo& cancel) {
  const int counted = SelectCases(block);
  if (fNChosen == 0) return counted;
  ShowChosen();
  TakePredictors(block, cancel);
  CountCases();
  return counted;
}

int FSRecordPass::SelectCases(const MCCommon::RecordBlock& block) {
  const double* weights = ColumnOf(block, fSettings.GetWeightPosition());
  const double* targets = ColumnOf(block, fSettings.GetTargetPosition());
  if (SelectAll(weights, targets, block.Cases())) return static_cast<int>(block.Cases());
  int counted = 0;
  fNChosen = 0;
  MakeRoom(block.Cases());
  for (std::size_t i = 0; i < block.Cases(); ++i) {
    double weight = 1.0;
    if (fbWeighted && !ReadWeight(weights, i, weight)) continue;
    ++counted;
    const double target = targets != nullptr ? targets[i] : MCMV::gMissingValue;
    if (fbWithTarget && !IsValidTarget(target)) {
      fCounts.CountExcluded(weight);
      continue;
    }
    Choose(i, weight, target);
  }
  MakeRoom(fNChosen);
  LookAtCases(fWeights.data(), fTargets.data());
  return counted;
}

bool FSRecordPass::SelectAll(const double* weights, const double* targets, std::size_t cases) {
  if ((fbWithTarget && targets == nullptr) || (fbWeighted && weights == nullptr)) return false;
  fNChosen = cases;
  if (!fbWeighted) fWeights.resize(cases, 1.0);
  LookAtCases(fbWeighted ? weights : fWeights.data(), targets);
  if (fbWithTarget && fSettings.IsCatTarget() && fHighest < 0) return false;
  if (fbWithTarget && !fSettings.IsCatTarget() && !fbOrdinary &&
      !std::all_of(targets, targets + cases, FSIsValidNumber)) {
    return false;
  }
  if (!fbWeighted) return true;
  if (!fWeightTraits.fbValid) return false;
  if (fSettings.GetWeightToFreq() != MCFSCommon::kAsIs && !fWeightTraits.fbWhole) return false;
  fCounts.SeeValidWeight();
  return true;
}

void FSRecordPass::LookAtCases(const double* weights, const double* targets) {
  const FSLoops& loops = FSLoops::InUse();
  fpWeights = weights;
  fpTargets = targets;
  fWeightTraits = fbWeighted
                      ? loops.fLookAtWeights(weights, fNChosen)
                      : FSWeightTraits{true, true, true, true, static_cast<double>(fNChosen)};
  if (!fbWithTarget) return;
  if (fSettings.IsCatTarget()) {
    fHighest = loops.fFindHighest(targets, fNChosen);
  } else {
    fbOrdinary = loops.fAreOrdinary(targets, fNChosen);
  }
}

void FSRecordPass::MakeRoom(std::size_t cases) {
  fChosen.resize(cases);
  fWeights.resize(cases);
  fTargets.resize(cases);
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
  ++fNChosen;
}

void FSRecordPass::ShowChosen() {
  fbUnitWeights = fbUnitWeights && fWeightTraits.fbUnit;
  fCases = {.fNCases = fNChosen,
            .fpTargets = fpTargets,
            .fpWeights = fpWeights,
            .fbUnitWeights = fbUnitWeights,
            .fbSmallWeights = fWeightTraits.fbSmall,
            .fbWholeWeights = fWeightTraits.fbWhole,
            .fWeight = fWeightTraits.fSum};
  if (!fbWithTarget) return;
  if (fSettings.IsCatTarget()) {
    fTargetHistory.TakeCategories(fCases, fHighest);
  } else {
    fTargetHistory.TakeValues(fCases, fbOrdinary);
  }
}

FSRecordPass::Room& FSRecordPass::Enter(std::size_t worker) {
  Room& room = fRooms[worker];
  if (room.fBlock == fBlock) return room;
  room.fBlock = fBlock;
  room.fCases = fCases;
  room.fHasValid.assign(fNChosen, 0);
  room.fCases.fpHasValid = room.fHasValid.data();
  room.fMemo = {};
  room.fCases.fpMemo = &room.fMemo;
  room.fCases.fpSort = &room.fSort;
  if (fbWithTarget && fSettings.IsCatTarget()) {
    room.fTarget.ShowCategories(room.fCases);
  } else if (fbWithTarget) {
    room.fTarget.ShowSteps(room.fCases);
  }
  return room;
}

void FSRecordPass::TakePredictors(const MCCommon::RecordBlock& block, FSCancelInfo& cancel) {
  ++fBlock;
  const auto take = [&](std::size_t j, std::size_t worker) {
    IFSPredTargetAccum* accumulator = fCounts.At(j);
    if (accumulator == nullptr || fColumns[j] >= block.Columns()) return;
    TakePredictor(*accumulator, block, fColumns[j], Enter(worker));
  };
  fWorkers.For(fNChosen * fColumns.size()).ForEach(fColumns.size(), take, [&cancel] {
    return cancel.IsCancel();
  });
  Enter(0);  // also when others have taken all
  JoinMarks();
}

void FSRecordPass::TakePredictor(IFSPredTargetAccum& accumulator,
                                 const MCCommon::RecordBlock& block, std::size_t column,
                                 Room& room) {
  const double* cells = ChosenCells(block, column, room);
  if (fbWithTarget == fCounts.IsOfPairs()) {
    accumulator.AddBlock(cells, room.fCases);
  } else {
    TakeMissing(accumulator, cells, room);
  }
  // Usually the first predictor has set them all, and the others need not store them again.
  if (room.fCases.fpHasValid != nullptr && AreAllSet(room.fHasValid)) {
    room.fCases.fpHasValid = nullptr;
  }
}

// An accumulator of an earlier pass of the other kind, with or without target, takes no values.
void FSRecordPass::TakeMissing(IFSPredTargetAccum& accumulator, const double* cells, Room& room) {
  for (std::size_t k = 0; k < fNChosen; ++k) {
    const bool valid =
        accumulator.IsCategorical() ? FSIsValidCategory(cells[k]) : FSIsValidNumber(cells[k]);
    if (valid) room.fHasValid[k] = 1;
    if (!valid) accumulator.AddMissing(fpWeights[k]);
  }
}

void FSRecordPass::JoinMarks() {
  fHasValid.swap(fRooms.front().fHasValid);
  for (std::size_t worker = 1; worker < fRooms.size() && !AreAllSet(fHasValid); ++worker) {
    if (fRooms[worker].fBlock != fBlock) continue;
    const std::vector<std::uint8_t>& marks = fRooms[worker].fHasValid;
    for (std::size_t k = 0; k < fHasValid.size(); ++k) fHasValid[k] |= marks[k];
  }
}

bool FSRecordPass::IsReserved(int column) const {
  return column == fSettings.GetTargetPosition() || column == fSettings.GetCaseIDPosition() ||
         column == fSettings.GetWeightPosition();
}

const double* FSRecordPass::ChosenCells(const MCCommon::RecordBlock& block, std::size_t column,
                                        Room& room) const {
  const double* cells = block.Column(column);
  if (fNChosen == block.Cases()) return cells;
  room.fCells.resize(fNChosen);
  for (std::size_t k = 0; k < fNChosen; ++k) room.fCells[k] = cells[fChosen[k]];
  return room.fCells.data();
}

void FSRecordPass::CountCases() {
  if (AreAllSet(fHasValid)) {
    fCounts.CountValidCases(fCases);
    if (fbWithTarget && fSettings.IsCatTarget()) CountTargets(fRooms.front().fCases);
    return;
  }
  for (std::size_t k = 0; k < fNChosen; ++k) {
    if (fHasValid[k] != 0) {
      fCounts.CountValid(fpWeights[k], fbWithTarget ? fpTargets[k] : 0.0, fbWithTarget);
    } else {
      fCounts.CountExcluded(fpWeights[k]);
    }
  }
}

void FSRecordPass::CountTargets(const FSCaseBlock& cases) {
  for (const FSCategoryRun& run : cases.fRuns) {
    fCounts.CountTarget(run.fCategory, run.fEnd - run.fBegin,
                        {fpTargets, cases.RunWeights(), cases.fpOrder + run.fBegin});
  }
  for (const FSPlace i : cases.fOthers) {
    fCounts.CountTarget(cases.fpTargetCategories[i], 1, {fpTargets, fpWeights, &i});
  }
}
