#include "common/parts/ColumnRange.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <unordered_map>
#include <utility>

#include "common/state/StateFields.h"

namespace {

// Of the levels' codes.
constexpr int kNominal = 1;
constexpr int kScale = 3;

bool IsAscending(const std::vector<std::int64_t>& first) {
  return std::adjacent_find(first.begin(), first.end(), std::greater_equal<>()) == first.end();
}

// The order of first appearance, and the values in it.
template <class Value>
void MergeInOrder(std::vector<Value>& values, std::vector<std::int64_t>& first,
                  const std::vector<Value>& others, const std::vector<std::int64_t>& othersFirst) {
  if (values == others) {  // as most parts have them
    std::transform(first.begin(), first.end(), othersFirst.begin(), first.begin(),
                   [](std::int64_t a, std::int64_t b) { return std::min(a, b); });
    if (IsAscending(first)) return;
  }
  std::unordered_map<Value, std::size_t> places;
  for (std::size_t i = 0; i < values.size(); ++i) places.emplace(values[i], i);
  for (std::size_t i = 0; i < others.size(); ++i) {
    const auto [place, isNew] = places.emplace(others[i], values.size());
    if (isNew) {
      values.push_back(others[i]);
      first.push_back(othersFirst[i]);
    } else {
      first[place->second] = std::min(first[place->second], othersFirst[i]);
    }
  }
  std::vector<std::size_t> order(values.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(),
            [&first](std::size_t a, std::size_t b) { return first[a] < first[b]; });
  std::vector<Value> sorted;
  std::vector<std::int64_t> sortedFirst;
  for (const std::size_t i : order) {
    sorted.push_back(std::move(values[i]));
    sortedFirst.push_back(first[i]);
  }
  values = std::move(sorted);
  first = std::move(sortedFirst);
}

}  // namespace

bool ColumnDictionary::IsMissing(double value) const {
  return (fbMissingRange && value >= fMissingLow && value <= fMissingHigh) ||
         std::find(fMissing.begin(), fMissing.end(), value) != fMissing.end();
}

void NumberRange::Add(double low, double high) {
  if (MCMV::IsMissing(low)) return;
  fLow = MCMV::IsMissing(fLow) ? low : std::min(fLow, low);
  fHigh = MCMV::IsMissing(fHigh) ? high : std::max(fHigh, high);
}

void ColumnRange::Unlist() {
  fbListed = false;
  fNumbers.clear();
  fTexts.clear();
  fFirst.clear();
}

std::string ColumnRange::WhyNot(const ColumnRange& other) const {
  const ColumnDictionary& mine = fDictionary;
  const ColumnDictionary& theirs = other.fDictionary;
  const std::string name = "\"" + mine.fName + "\" ";
  if (mine.fName != theirs.fName) {
    return "column \"" + theirs.fName + "\" stands where another part has \"" + mine.fName +
           "\"; parts have the same columns in the same order";
  }
  const bool areBothKnown = fNValues > 0 && other.fNValues > 0;
  const bool areAlike = mine.IsNumeric() == theirs.IsNumeric();
  if (areBothKnown && !areAlike) {
    return name + "holds " + (theirs.IsNumeric() ? "numbers" : "texts") + " in one part and " +
           (mine.IsNumeric() ? "numbers" : "texts") + " in another; a schema says what it is";
  }
  if (areBothKnown && mine.fTime != theirs.fTime) {
    return name + "holds times of another kind in another part";
  }
  // What one part says of texts, another one without a value cannot say of numbers.
  if (!areAlike) return "";
  const bool isLevelSaid = !mine.fbLevelFound || !theirs.fbLevelFound;
  if (isLevelSaid && (mine.fLevel != theirs.fLevel || mine.fbLevelFound != theirs.fbLevelFound)) {
    return name + "was given another level in another part";
  }
  if (mine.fMissing != theirs.fMissing || mine.fMissingTexts != theirs.fMissingTexts ||
      mine.fbMissingRange != theirs.fbMissingRange || mine.fMissingLow != theirs.fMissingLow ||
      mine.fMissingHigh != theirs.fMissingHigh) {
    return name + "has other user-missing values in another part";
  }
  return "";
}

void ColumnRange::MergeCategories(const ColumnRange& other) {
  if (!fbListed || !other.fbListed) return Unlist();
  fDictionary.IsNumeric() ? MergeInOrder(fNumbers, fFirst, other.fNumbers, other.fFirst)
                          : MergeInOrder(fTexts, fFirst, other.fTexts, other.fFirst);
  if (CategoryCount() > kMostCategories) Unlist();
}

// The rule that a table on one machine has.
void ColumnRange::SettleLevel() {
  ColumnDictionary& mine = fDictionary;
  if (!mine.fbLevelFound || !mine.IsNumeric() || mine.fLevel == kScale) return;
  const auto nValid = static_cast<std::size_t>(std::count_if(
      fNumbers.begin(), fNumbers.end(), [&mine](double value) { return !mine.IsMissing(value); }));
  if (fbListed && nValid < kScaleDistinctValues) return;
  mine.fLevel = kScale;
  Unlist();
}

std::string ColumnRange::Merge(const ColumnRange& other) {
  const std::string why = WhyNot(other);
  if (!why.empty()) return why;
  // A column without a value is of any kind.
  if (fNValues == 0 &&
      (other.fNValues > 0 || (fDictionary.IsNumeric() && !other.fDictionary.IsNumeric()))) {
    *this = other;
    return "";
  }
  if (other.fNValues == 0) return "";
  fNValues += other.fNValues;
  fValid.Add(other.fValid.fLow, other.fValid.fHigh);
  fAll.Add(other.fAll.fLow, other.fAll.fHigh);
  ColumnDictionary& mine = fDictionary;
  if (!mine.IsNumeric()) mine.fType = std::max(mine.fType, other.fDictionary.fType);
  if (mine.fbLevelFound) mine.fLevel = std::max(mine.fLevel, other.fDictionary.fLevel);
  for (std::size_t i = 0; i < mine.fFormats.size() && i < other.fDictionary.fFormats.size(); ++i) {
    mine.fFormats[i] = std::max(mine.fFormats[i], other.fDictionary.fFormats[i]);
  }
  if (mine.fLevel == kScale && mine.fbLevelFound) {
    Unlist();
  } else {
    MergeCategories(other);
    SettleLevel();
  }
  return "";
}

template <class Archive, class Self>
void NumberRange::Fields(Archive& archive, Self& self) {
  archive.Double(self.fLow);
  archive.Double(self.fHigh);
  archive.Check(self.fLow <= self.fHigh);
}

template <class Archive, class Self>
void ColumnDictionary::Fields(Archive& archive, Self& self) {
  archive.Text(self.fName);
  archive.Text(self.fLabel);
  archive.Int(self.fType);
  archive.Check(self.fType >= 0);
  StateInts(archive, self.fFormats);
  archive.Check(self.fFormats.size() == 6);
  StateRanged(archive, self.fLevel, kNominal, kScale);
  archive.Flag(self.fbLevelFound);
  StateRanged(archive, self.fTime, 0, 4);
  StateRanged(archive, self.fAlignment, 0, 2);
  StateDoubles(archive, self.fLabelled);
  StateTexts(archive, self.fLabelledTexts);
  StateTexts(archive, self.fLabels);
  archive.Check(self.fLabels.size() == self.fLabelled.size() + self.fLabelledTexts.size());
  StateDoubles(archive, self.fMissing);
  StateTexts(archive, self.fMissingTexts);
  archive.Flag(self.fbMissingRange);
  archive.Double(self.fMissingLow);
  archive.Double(self.fMissingHigh);
}

template <class Archive, class Self>
void ColumnRange::Fields(Archive& archive, Self& self) {
  ColumnDictionary::Fields(archive, self.fDictionary);
  archive.Long(self.fNValues);
  NumberRange::Fields(archive, self.fValid);
  NumberRange::Fields(archive, self.fAll);
  archive.Flag(self.fbListed);
  StateDoubles(archive, self.fNumbers);
  StateTexts(archive, self.fTexts);
  archive.Size(self.fFirst, 8);
  for (auto& first : self.fFirst) archive.Long(first);
  const bool isNumeric = self.fDictionary.IsNumeric();
  archive.Check(self.fNValues >= 0 && IsAscending(self.fFirst));
  archive.Check(self.fFirst.size() == (isNumeric ? self.fNumbers.size() : self.fTexts.size()));
  archive.Check((isNumeric ? self.fTexts.empty() : self.fNumbers.empty()) &&
                (self.fbListed || self.fFirst.empty()));
}

MC_STATE_OPERATIONS(ColumnRange, "PSRANGE", "ColumnRange")
