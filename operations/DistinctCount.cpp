#include "operations/DistinctCount.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace PredSelect {

namespace {

constexpr std::size_t kFirstSlots = 32;
constexpr int kIndexBits = 12;
constexpr std::size_t kRegisters = std::size_t{1} << kIndexBits;

}  // namespace

DistinctCount::DistinctCount() : fSlots(kFirstSlots) {}

// The finalizer of SplitMix64, which spreads every bit over all others.
std::uint64_t DistinctCount::Hash(double value) {
  auto bits = std::bit_cast<std::uint64_t>(value == 0.0 ? 0.0 : value);
  bits = (bits ^ (bits >> 30)) * 0xbf58476d1ce4e5b9;
  bits = (bits ^ (bits >> 27)) * 0x94d049bb133111eb;
  return bits ^ (bits >> 31);
}

bool DistinctCount::Add(double value) {
  const std::size_t mask = fSlots.size() - 1;
  std::size_t at = Hash(value) & mask;
  while (fSlots[at].second > 0 && fSlots[at].first != value) at = (at + 1) & mask;
  if (fSlots[at].second == 0) {
    if (fNDistinct == kMostExact) return false;
    fSlots[at].first = value;
    ++fNDistinct;
  }
  ++fSlots[at].second;
  if (4 * fNDistinct > 3 * fSlots.size()) Grow();
  return true;
}

void DistinctCount::Grow() {
  std::vector<Counted> larger(2 * fSlots.size());
  const std::size_t mask = larger.size() - 1;
  for (const Counted& slot : fSlots) {
    if (slot.second == 0) continue;
    std::size_t at = Hash(slot.first) & mask;
    while (larger[at].second > 0) at = (at + 1) & mask;
    larger[at] = slot;
  }
  fSlots = std::move(larger);
}

std::vector<DistinctCount::Counted> DistinctCount::GiveUp() {
  fRegisters.assign(kRegisters, 0);
  std::vector<Counted> counts = TakeCounts();
  for (const auto& [value, count] : counts) Estimate(value);
  return counts;
}

void DistinctCount::Estimate(double value) {
  const std::uint64_t hash = Hash(value);
  const int run = std::min(std::countl_zero(hash << kIndexBits), 64 - kIndexBits) + 1;
  std::uint8_t& longest = fRegisters[hash >> (64 - kIndexBits)];
  longest = std::max(longest, static_cast<std::uint8_t>(run));
}

double DistinctCount::Count() const {
  if (IsExact()) return static_cast<double>(fNDistinct);
  constexpr auto kCount = static_cast<double>(kRegisters);
  const double alpha = 0.7213 / (1.0 + 1.079 / kCount);
  double sum = 0.0;
  for (const std::uint8_t longest : fRegisters) sum += std::ldexp(1.0, -longest);
  const double raw = alpha * kCount * kCount / sum;
  const auto nEmpty = static_cast<double>(std::ranges::count(fRegisters, 0));
  // Where many classes have met nothing yet, their number says more.
  const bool isSmall = raw <= 2.5 * kCount && nEmpty > 0.0;
  return std::round(isSmall ? kCount * std::log(kCount / nEmpty) : raw);
}

std::vector<DistinctCount::Counted> DistinctCount::TakeCounts() {
  std::vector<Counted> counts;
  counts.reserve(fNDistinct);
  for (const Counted& slot : fSlots) {
    if (slot.second > 0) counts.push_back(slot);
  }
  std::sort(counts.begin(), counts.end());
  std::vector<Counted>().swap(fSlots);
  return counts;
}

}  // namespace PredSelect
