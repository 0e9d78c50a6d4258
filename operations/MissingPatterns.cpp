#include "operations/MissingPatterns.h"

#include <algorithm>

#include "common/MissingValue.h"
#include "common/Workers.h"

namespace PredSelect {

namespace {

using MCHost::ColumnView;
using MCHost::TableBatch;

constexpr std::size_t kCasesAtOnce = 4096;

// SplitMix64: neighbouring numbers have nothing in common.
std::uint64_t Scattered(std::uint64_t number) {
  number += 0x9e3779b97f4a7c15u;
  number = (number ^ (number >> 30)) * 0xbf58476d1ce4e5b9u;
  number = (number ^ (number >> 27)) * 0x94d049bb133111ebu;
  return number ^ (number >> 31);
}

}  // namespace

MissingPatterns::MissingPatterns(std::vector<const KOVA_Variable*> variables)
    : fVariables(std::move(variables)), fMissingTexts(fVariables.size()) {}

MissingPatterns::Key MissingPatterns::KeyOf(std::size_t column) {
  return {Scattered(2 * column), Scattered(2 * column + 1)};
}

void MissingPatterns::Observe(const TableBatch& batch, MCCommon::Workers& workers) {
  LearnTexts(batch);
  fKeys.assign(batch.fNCases, {0, 0});
  const auto addAll = [&](std::size_t part, std::size_t /*worker*/) {
    const std::size_t from = part * kCasesAtOnce;
    const std::size_t to = std::min(from + kCasesAtOnce, batch.fNCases);
    for (std::size_t j = 0; j < fVariables.size(); ++j) {
      AddColumn(j, batch.fColumns[j], from, to);
    }
  };
  workers.For(batch.fNCases * fVariables.size())
      .ForEach((batch.fNCases + kCasesAtOnce - 1) / kCasesAtOnce, addAll);
  for (std::size_t i = 0; i < batch.fNCases; ++i) Count(batch, i);
}

// Which codes stand for user-missing texts; dictionaries grow from batch to batch.
void MissingPatterns::LearnTexts(const TableBatch& batch) {
  for (std::size_t j = 0; j < fVariables.size(); ++j) {
    const MCHost::StringDictionary* dictionary = batch.fColumns[j].fpDictionary;
    const KOVA_MissingValues& missing = fVariables[j]->GetMissingValues();
    if (dictionary == nullptr || missing.IsEmpty()) continue;
    while (fMissingTexts[j].size() < static_cast<std::size_t>(dictionary->Size())) {
      const auto code = static_cast<std::int32_t>(fMissingTexts[j].size());
      fMissingTexts[j].push_back(missing.Contains(dictionary->At(code)) ? 1 : 0);
    }
  }
}

bool MissingPatterns::IsMissing(std::size_t column, const ColumnView& view, std::size_t i) const {
  if (view.fpNumbers != nullptr) {
    const double value = view.fpNumbers[i];
    const KOVA_MissingValues& missing = fVariables[column]->GetMissingValues();
    return MCMV::IsMissing(value) || (!missing.IsEmpty() && missing.Contains(value));
  }
  const std::int32_t code = view.fpCodes[i];
  const std::vector<char>& texts = fMissingTexts[column];
  return code < 0 || (!texts.empty() && texts[static_cast<std::size_t>(code)] != 0);
}

void MissingPatterns::AddColumn(std::size_t column, const ColumnView& view, std::size_t from,
                                std::size_t to) {
  const Key own = KeyOf(column);
  for (std::size_t i = from; i < to; ++i) {
    if (!IsMissing(column, view, i)) continue;
    fKeys[i].first ^= own.first;
    fKeys[i].second ^= own.second;
  }
}

void MissingPatterns::Count(const TableBatch& batch, std::size_t i) {
  const auto found = fCounted.find(fKeys[i]);
  if (found != fCounted.end()) {
    ++found->second.fPattern.fNCases;
    return;
  }
  if (fCounted.size() == kMostPatterns) LetGo();
  Counted& counted = fCounted[fKeys[i]];
  counted.fFirst = fNMet++;
  counted.fPattern.fNCases = 1;
  counted.fPattern.fNMore = fNLost;
  for (std::size_t j = 0; j < fVariables.size(); ++j) {
    if (IsMissing(j, batch.fColumns[j], i))
      counted.fPattern.fColumns.push_back(static_cast<int>(j));
  }
}

bool MissingPatterns::IsBefore(const Counted& left, const Counted& right) {
  const std::int64_t least = left.fPattern.fNCases, other = right.fPattern.fNCases;
  return least != other ? least > other : left.fFirst < right.fFirst;
}

// Half of the patterns, those that can have come least often.
void MissingPatterns::LetGo() {
  const auto mostOf = [](const Counted& counted) {
    return counted.fPattern.fNCases + counted.fPattern.fNMore;
  };
  std::vector<std::pair<std::int64_t, std::uint64_t>> all;
  for (const auto& [key, counted] : fCounted) all.emplace_back(mostOf(counted), ~counted.fFirst);
  const auto middle = all.begin() + static_cast<std::ptrdiff_t>(all.size() / 2);
  std::nth_element(all.begin(), middle, all.end());
  const std::pair<std::int64_t, std::uint64_t> least = *middle;
  std::erase_if(fCounted, [&](const auto& item) {
    const std::int64_t most = mostOf(item.second);
    const bool isGone = std::pair(most, ~item.second.fFirst) < least;
    if (isGone) fNLost = std::max(fNLost, most);
    return isGone;
  });
}

std::vector<MissingPatterns::Pattern> MissingPatterns::MostFrequent(std::size_t n) const {
  std::vector<const Counted*> all;
  for (const auto& [key, counted] : fCounted) all.push_back(&counted);
  std::sort(all.begin(), all.end(),
            [](const Counted* left, const Counted* right) { return IsBefore(*left, *right); });
  if (all.size() > n) all.resize(n);
  std::vector<Pattern> patterns;
  for (const Counted* counted : all) patterns.push_back(counted->fPattern);
  return patterns;
}

}  // namespace PredSelect
