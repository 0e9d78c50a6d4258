// How well a model classified a sample: case weight by observed and predicted category.
#pragma once

#include <vector>

class NBOutputStatistics {
 public:
  explicit NBOutputStatistics(int targetCategories);

  // Empties the matrix, for so many categories.
  void Reset(int targetCategories);
  // Makes room for so many categories, behind those that are there; never for fewer.
  void Grow(int targetCategories);
  // REQUIRES: both categories within the matrix, weight > 0.
  void Accumulate(int observed, int predicted, double weight);

  int GetNCategories() const { return fNCategories; }
  // Summed case weight of a cell; 0 <= observed, predicted < GetNCategories().
  double GetMisClassElement(int observed, int predicted) const;
  std::vector<double> GetMisClassRow(int observed) const;
  std::vector<std::vector<double>> GetMisClassMatrixAsVecOfRows() const;
  double GetTotalWeight() const { return fTotalWeight; }
  // Misclassified weight in percent of the total; 0 without any weight.
  double GetOverallError() const;

 private:
  int fNCategories;
  std::vector<double> fvMatrix;
  double fTotalWeight = 0;
  double fMisclassified = 0;
};
