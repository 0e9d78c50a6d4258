#include "feature/pass/FSTargetView.h"

#include <algorithm>

#include "feature/accumulators/FSScale.h"

void FSTargetView::ShowCategories(const std::vector<int>& categories, FSCaseBlock& block) {
  SortByCategory(categories);
  block.fpOrder = fOrder.data();
  block.fRuns = fRuns;
  block.fOthers = fOthers;
  for (const FSTargetRun& run : fRuns) fSide = std::max(fSide, run.fCategory + 1);
  fbFewCategories = fbFewCategories && fOthers.empty() && fSide <= kFSSmallTargets;
  block.fTargetSide = fbFewCategories ? fSide : 0;
}

// Counting sort: the cases of a category keep their order.
void FSTargetView::SortByCategory(const std::vector<int>& categories) {
  fPlaces.fill(0);
  fOthers.clear();
  for (std::size_t i = 0; i < categories.size(); ++i) {
    if (FSIsSmall(categories[i])) {
      ++fPlaces[static_cast<std::size_t>(categories[i])];
    } else {
      fOthers.push_back(static_cast<std::uint32_t>(i));
    }
  }
  fRuns.clear();
  std::size_t begin = 0;
  for (std::size_t k = 0; k < fPlaces.size(); ++k) {
    const std::size_t end = begin + fPlaces[k];
    if (end > begin) fRuns.push_back({static_cast<int>(k), begin, end});
    fPlaces[k] = begin;
    begin = end;
  }
  fOrder.resize(begin);
  for (std::size_t i = 0; i < categories.size(); ++i) {
    if (!FSIsSmall(categories[i])) continue;
    fOrder[fPlaces[static_cast<std::size_t>(categories[i])]++] = static_cast<std::uint32_t>(i);
  }
}

void FSTargetView::ShowValues(const std::vector<double>& values, FSCaseBlock& block) {
  fPieces.clear();
  fbOrdinary = fbOrdinary && std::all_of(values.begin(), values.end(),
                                         [](double y) { return FSScale::IsOrdinary(y); });
  block.fNBefore = fNCases;
  fSteps.resize(values.size());
  for (std::size_t begin = 0; begin < values.size() && fbOrdinary;) {
    begin = AddPiece(values, begin);
  }
  fNCases += static_cast<std::int64_t>(values.size());
  block.fbOrdinaryTargets = fbOrdinary;
  block.fPieces = fPieces;
  block.fpTargetSteps = fSteps.data();
}

// Returns where the next piece begins.
std::size_t FSTargetView::AddPiece(const std::vector<double>& values, std::size_t begin) {
  const std::size_t n =
      fOpen.AddRun(values.size() - begin, [&](std::size_t k) { return values[begin + k]; });
  const std::size_t end = begin + n;
  fbOrdinary = n > 0;
  for (std::size_t i = begin; i < end; ++i) fSteps[i] = values[i] - fOpen.GetOrigin();
  fPieces.push_back({begin, end, fOpen.GetOrigin(), fOpen.GetSums(), fOpen.GetSquares()});
  if (fOpen.IsFull()) fOpen = {};
  return end;
}
