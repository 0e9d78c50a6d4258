#include "naivebayes/parts/NBPartClassified.h"

#include <algorithm>
#include <cstddef>
#include <functional>

#include "common/state/StateFields.h"
#include "naivebayes/model/NBOutputStatistics.h"

namespace {

void Take(const NBOutputStatistics* stats, std::vector<double>& matrix) {
  if (stats == nullptr) return;
  for (int row = 0; row < stats->GetNCategories(); ++row) {
    const std::vector<double> weights = stats->GetMisClassRow(row);
    matrix.insert(matrix.end(), weights.begin(), weights.end());
  }
}

void AddMatrix(std::vector<double>& into, const std::vector<double>& from) {
  if (into.empty()) {
    into = from;
  } else if (!from.empty()) {
    std::transform(into.begin(), into.end(), from.begin(), into.begin(), std::plus<>());
  }
}

template <class Counted>
void AddCounted(std::optional<Counted>& into, const std::optional<Counted>& from) {
  if (!into) {
    into = from;
  } else if (from) {
    into->Add(*from);
  }
}

}  // namespace

void NBPartClassified::Take(const NBOutputStatistics* training, const NBOutputStatistics* test) {
  ::Take(training, fTraining);
  ::Take(test, fTest);
}

bool NBPartClassified::Add(const NBPartClassified& other) {
  if (fNTargets != other.fNTargets) return false;
  fNCases += other.fNCases;
  AddMatrix(fTraining, other.fTraining);
  AddMatrix(fTest, other.fTest);
  AddCounted(fEvaluation, other.fEvaluation);
  for (int i = 0; i < 2; ++i) AddCounted(fCurves[i], other.fCurves[i]);
  return true;
}

void NBPartClassified::AddTo(bool training, NBOutputStatistics& stats) const {
  const std::vector<double>& matrix = training ? fTraining : fTest;
  for (std::size_t cell = 0; cell < matrix.size(); ++cell) {
    const int at = static_cast<int>(cell);
    if (matrix[cell] > 0) stats.Accumulate(at / fNTargets, at % fNTargets, matrix[cell]);
  }
}

template <class Archive, class Self>
void NBPartClassified::Fields(Archive& archive, Self& self) {
  archive.Long(self.fNCases);
  archive.Int(self.fNTargets);
  StateDoubles(archive, self.fTraining);
  StateDoubles(archive, self.fTest);
  StateOptional(archive, self.fEvaluation);
  for (auto& curves : self.fCurves) StateOptional(archive, curves);
  const auto n = static_cast<std::size_t>(std::max(self.fNTargets, 0));
  archive.Check(self.fNCases >= 0 && self.fNTargets >= 1 && self.fNTargets < 1 << 16);
  for (const auto* matrix : {&self.fTraining, &self.fTest}) {
    archive.Check(matrix->empty() || matrix->size() == n * n);
  }
  archive.Check(!self.fEvaluation || self.fEvaluation->GetNClasses() == n);
  for (const auto& curves : self.fCurves) {
    archive.Check(!curves || curves->GetNCategories() ==
                                 std::min(self.fNTargets, MCCommon::ScoreCurves::kMostCategories));
  }
}

MC_STATE_OPERATIONS(NBPartClassified, "NBPCLASS", "NBPartClassified")
