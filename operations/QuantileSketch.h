// The distribution of numbers that come by one after the other, in memory that grows with the
// logarithm of their number.
//
// Numbers gather in levels; one of the level l stands for 2^l of them. A level that is full is
// sorted, every second number goes up, now the first of each pair, now the second, and the others
// are gone. So a rank is off by no more than about log2(n / 1024) / 2048 of all, in practice far
// less. Equal numbers in equal order give equal results.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace PredSelect {

class QuantileSketch {
 public:
  // `count` equal numbers.
  void Add(double value, std::int64_t count = 1);

  // Numbers with how many each stands for, in ascending order. The sum is the number of all.
  std::vector<std::pair<double, std::int64_t>> Weights() const;

 private:
  static constexpr std::size_t kFull = 1024;

  struct Level {
    std::vector<double> fValues;
    bool fbSecond = false;  // of the next pairs that one goes up
  };

  void Put(std::size_t level, double value);
  void Thin(std::size_t level);

  std::vector<Level> fLevels;
};

// What counted numbers, in ascending order, say of their distribution.
class Distribution {
 public:
  explicit Distribution(std::vector<std::pair<double, std::int64_t>> counts);

  const std::vector<std::pair<double, std::int64_t>>& Counts() const { return fCounts; }

  // Between the two nearest numbers in proportion, as most programs do it. A missing value for
  // nothing. REQUIRES: 0 <= share <= 1.
  double Quantile(double share) const;

  // How many are in each of n equally wide bins from the least to the greatest, which is in the
  // last bin; all in the first where they are equal.
  std::vector<double> Histogram(std::size_t n, double least, double greatest) const;

 private:
  double AtRank(std::int64_t rank) const;

  std::vector<std::pair<double, std::int64_t>> fCounts;
  std::int64_t fTotal = 0;
};

}  // namespace PredSelect
