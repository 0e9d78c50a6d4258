// The predictors that were removed, and why: two parallel lists in ascending order of the index.
#pragma once

#include <utility>
#include <vector>

class FSExclusions {
 public:
  // Predictors and their reasons (MCFSCommon::PredictorDelReason). REQUIRES: none is there yet.
  void Add(const std::vector<std::pair<int, int>>& found);

  int Size() const { return static_cast<int>(fIndices.size()); }
  bool Contains(int predictor) const;
  const std::vector<int>& GetIndices() const { return fIndices; }
  const std::vector<int>& GetReasons() const { return fReasons; }

  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self, int nPredictors);

 private:
  std::vector<int> fIndices;
  std::vector<int> fReasons;
};
