#include "host/arrow/NearlyNumbers.h"

#include <algorithm>

namespace MCHost {

namespace {

constexpr std::size_t kMostTexts = 3;
constexpr std::size_t kLongest = 40;
constexpr std::int64_t kFewOfCells = 20;  // one in so many cells is one of few
constexpr std::int64_t kJudgedFrom = 4;   // so many texts tell a column of texts

}  // namespace

void NearlyNumbers::CountText(std::string_view text) {
  ++fNTexts;
  const bool isKnown = std::find(fTexts.begin(), fTexts.end(), text) != fTexts.end();
  const bool isShown = fTexts.size() < kMostTexts && text.size() <= kLongest;
  if (!isKnown && isShown) fTexts.emplace_back(text);
  fbMore |= !isKnown && !isShown;
  const bool isMixed = fbMore && fNTexts * kFewOfCells > fNCells;
  fbOpen = fNTexts < kJudgedFrom || (2 * fNTexts <= fNCells && !isMixed);
}

bool NearlyNumbers::AreThere() const {
  if (!fbOpen || fTexts.empty() || 2 * fNTexts >= fNCells) return false;
  const bool isOneText = fTexts.size() == 1 && !fbMore;
  return isOneText || fNTexts * kFewOfCells <= fNCells;
}

}  // namespace MCHost
