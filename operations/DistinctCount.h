// How many distinct numbers come by, and how often each of them came as long as they are few; in
// memory that many of them do not fill.
//
// Up to kMostExact distinct numbers are counted one by one. Beyond them the number is estimated
// from the longest run of zeros in 4,096 classes of hashes (HyperLogLog), with a standard error of
// 1.6 percent. The order of the numbers changes nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace PredSelect {

class DistinctCount {
 public:
  static constexpr std::size_t kMostExact = 2048;

  // A number and how often it came.
  using Counted = std::pair<double, std::int64_t>;

  DistinctCount();

  // False, and nothing else, for a number that would make them too many. REQUIRES: IsExact().
  bool Add(double value);

  // From here on the number is an estimate. Gives the counts so far, in ascending order.
  std::vector<Counted> GiveUp();

  // REQUIRES: !IsExact().
  void Estimate(double value);

  bool IsExact() const { return fRegisters.empty(); }
  double Count() const;

  // In ascending order; from here on only their number is kept. REQUIRES: IsExact(); not taken yet.
  std::vector<Counted> TakeCounts();

 private:
  static std::uint64_t Hash(double value);

  void Grow();

  std::vector<Counted> fSlots;  // by hash; a count of 0 is a free one
  std::size_t fNDistinct = 0;
  std::vector<std::uint8_t> fRegisters;
};

}  // namespace PredSelect
