#include "feature/pass/FSTargetHistory.h"

#include <algorithm>

void FSTargetHistory::TakeCategories(FSCaseBlock& block, int highest) {
  fSide = std::max(fSide, std::min(highest, kFSSmallTargets) + 1);
  fbFewCategories = fbFewCategories && highest >= 0 && fSide <= kFSSmallTargets;
  block.fTargetSide = fbFewCategories ? fSide : 0;
}

void FSTargetHistory::TakeValues(FSCaseBlock& block, bool ordinary) {
  fPieces.clear();
  fbOrdinary = fbOrdinary && ordinary;
  fbSmallWeights = fbSmallWeights && block.fbSmallWeights;
  block.fNBefore = fNCases;
  for (std::size_t begin = 0; begin < block.fNCases && fbOrdinary && fbSmallWeights;) {
    begin = AddPiece(block, begin);
  }
  fNCases += static_cast<std::int64_t>(block.fNCases);
  block.fbOrdinaryTargets = fbOrdinary;
  block.fPieces = fPieces;
}

// Returns where the next piece begins.
std::size_t FSTargetHistory::AddPiece(const FSCaseBlock& block, std::size_t begin) {
  const FSRun values{block.fpTargets, block.RunWeights()};
  const std::size_t end = begin + fOpen.AddRun(block.fNCases - begin, values.From(begin));
  fbOrdinary = end > begin;
  fPieces.push_back({begin, end, fOpen.GetOrigin(), fOpen.GetSums()});
  if (fOpen.IsFull()) fOpen = {};
  return end;
}
