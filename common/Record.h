// One case as it passes from a caller to an engine: a row of doubles, one per column.
//
// What a column means (target, weight, predictor) is told to the engine in its settings. A missing
// numeric value is MCMV::gMissingValue; a categorical column holds codes 0, 1, 2, ... and may also
// say missing by -1.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace MCCommon {

class Record {
 public:
  Record() = default;
  explicit Record(std::size_t size) : fValues(size, 0.0) {}
  explicit Record(std::vector<double> values) : fValues(std::move(values)) {}

  std::size_t Size() const { return fValues.size(); }
  const std::vector<double>& GetAll() const { return fValues; }

  // REQUIRES: column < Size().
  double operator[](std::size_t column) const { return fValues[column]; }
  double& operator[](std::size_t column) { return fValues[column]; }

 private:
  std::vector<double> fValues;
};

}  // namespace MCCommon
