#include "feature/pass/FSTargetView.h"

#include <cstddef>

#include "feature/accumulators/FSLoops.h"

void FSTargetView::ShowCategories(FSCaseBlock& block) {
  fCategories.resize(block.fNCases);
  FSLoops::InUse().fTakeCategories(block.fpTargets, block.fNCases, fCategories.data());
  fSort.Sort(block.fpTargets, block.fNCases);
  block.fpTargetCategories = fCategories.data();
  block.fpOrder = fSort.Order();
  block.fRuns = fSort.Runs();
  block.fOthers = fSort.Others();
}

void FSTargetView::ShowSteps(FSCaseBlock& block) {
  fSteps.resize(block.fNCases);
  for (const FSTargetPiece& piece : block.fPieces) {
    for (std::size_t i = piece.fBegin; i < piece.fEnd; ++i) {
      fSteps[i] = block.fpTargets[i] - piece.fOrigin;
    }
  }
  block.fpTargetSteps = fSteps.data();
}
