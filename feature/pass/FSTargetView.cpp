#include "feature/pass/FSTargetView.h"

#include <algorithm>

#include "feature/accumulators/FSScale.h"

void FSTargetView::ShowCategories(FSCaseBlock& block) {
  fSort.Sort(block.fpTargets, block.fNCases);
  block.fpOrder = fSort.Order();
  block.fRuns = fSort.Runs();
  block.fOthers = fSort.Others();
  for (const FSCategoryRun& run : block.fRuns) fSide = std::max(fSide, run.fCategory + 1);
  fbFewCategories = fbFewCategories && block.fOthers.empty() && fSide <= kFSSmallTargets;
  block.fTargetSide = fbFewCategories ? fSide : 0;
}

void FSTargetView::ShowValues(FSCaseBlock& block) {
  fPieces.clear();
  fbOrdinary = fbOrdinary && std::all_of(block.fpTargets, block.fpTargets + block.fNCases,
                                         [](double y) { return FSScale::IsOrdinary(y); });
  fbSmallWeights = fbSmallWeights && block.fbSmallWeights;
  block.fNBefore = fNCases;
  fSteps.resize(block.fNCases);
  for (std::size_t begin = 0; begin < block.fNCases && fbOrdinary && fbSmallWeights;) {
    begin = AddPiece(block, begin);
  }
  fNCases += static_cast<std::int64_t>(block.fNCases);
  block.fbOrdinaryTargets = fbOrdinary;
  block.fPieces = fPieces;
  block.fpTargetSteps = fSteps.data();
}

// Returns where the next piece begins.
std::size_t FSTargetView::AddPiece(const FSCaseBlock& block, std::size_t begin) {
  const FSRun values{block.fpTargets, block.RunWeights()};
  const std::size_t end = begin + fOpen.AddRun(block.fNCases - begin, values.From(begin));
  fbOrdinary = end > begin;
  for (std::size_t i = begin; i < end; ++i) fSteps[i] = block.fpTargets[i] - fOpen.GetOrigin();
  fPieces.push_back({begin, end, fOpen.GetOrigin(), fOpen.GetSums()});
  if (fOpen.IsFull()) fOpen = {};
  return end;
}
