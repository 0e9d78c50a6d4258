#include "operations/ModelSummary.h"

#include <algorithm>
#include <cstddef>

#include "common/MissingValue.h"
#include "host/output/ShowText.h"
#include "operations/TableReader.h"

namespace PredSelect {

namespace {

using MCHost::OutputTable;

constexpr std::size_t kRows = 0;
constexpr std::size_t kColumns = 1;
constexpr std::size_t kLayers = 2;

// The last row of the table where none is marked as chosen.
bool IsChosen(const OutputTable& table, const MCHost::OutputCell* added) {
  if (added == nullptr) return false;
  return std::any_of(added->fNotes.begin(), added->fNotes.end(), [&table](int note) {
    return table.fFootnotes[static_cast<std::size_t>(note)].fKey == "The chosen subset...";
  });
}

// The first row is the subset without a predictor.
void ReadSteps(const OutputTable& table, ModelSummary& summary) {
  const TableReader reader(table);
  const int added = reader.Find(kColumns, "Predictor Added");
  for (const char* criterion : {"Test Data Criterion", "Pseudo-BIC"}) {
    if (reader.Find(kColumns, criterion) >= 0) summary.fCriterion = criterion;
  }
  const int criterion = reader.Find(kColumns, summary.fCriterion);
  const std::vector<int> rows = reader.Leaves(kRows);
  summary.fNTried = static_cast<int>(rows.size()) - 1;
  double before = MCMV::gMissingValue;
  for (const int row : rows) {
    if (row != rows.front()) {
      const MCHost::OutputText name = reader.Text({row, added});
      const double now = reader.Number({row, criterion});
      const bool isKnown = !MCMV::IsMissing(before) && !MCMV::IsMissing(now);
      summary.fSteps.push_back(
          {name.fKey, name.fLabel, now, isKnown ? before - now : MCMV::gMissingValue});
      before = now;
    }
    if (IsChosen(table, reader.At({row, added}))) return;
  }
}

// Observed against predicted categories, of one sample.
class Confusions {
 public:
  explicit Confusions(const OutputTable& table) : fReader(table) {
    fCorrect = fReader.Find(kColumns, "Percent Correct");
    fOverall = fReader.Find(kRows, "Overall Percent");
    for (const int row : fReader.Leaves(kRows)) {
      if (row != fOverall) fObserved.push_back(row);
    }
    for (const int column : fReader.Leaves(kColumns)) {
      if (column != fCorrect) fPredicted.push_back(column);
    }
  }

  std::vector<int> Samples() const { return fReader.Leaves(kLayers); }

  ModelSample Sample(int sample) const {
    double cases = 0.0;
    double most = 0.0;
    for (const int row : fObserved) {
      const double total = Total(row, sample);
      cases += total;
      most = std::max(most, total);
    }
    return {MCHost::TextId(fReader.LabelOf(kLayers, sample)), cases,
            fReader.Number({fOverall, fCorrect, sample}),
            cases > 0.0 ? 100.0 * most / cases : MCMV::gMissingValue};
  }

  std::vector<ModelConfusion> Matrix(int sample) const {
    const std::string name = MCHost::TextId(fReader.LabelOf(kLayers, sample));
    std::vector<ModelConfusion> found;
    for (const int row : fObserved) {
      const double total = Total(row, sample);
      for (const int column : fPredicted) {
        const double cases = fReader.Number({row, column, sample});
        if (!(cases > 0.0)) continue;
        found.push_back({name, fReader.LabelOf(kRows, row), fReader.LabelOf(kColumns, column),
                         cases, 100.0 * cases / total});
      }
    }
    return found;
  }

 private:
  double Total(int row, int sample) const {
    double total = 0.0;
    for (const int column : fPredicted) total += fReader.Number({row, column, sample});
    return total;
  }

  TableReader fReader;
  int fCorrect;
  int fOverall;
  std::vector<int> fObserved;
  std::vector<int> fPredicted;
};

// Of equally frequent ones the first of the matrix.
std::vector<ModelConfusion> Worst(std::vector<ModelConfusion> matrix) {
  std::erase_if(matrix, [](const ModelConfusion& cell) {
    return cell.fObserved.fKey == cell.fPredicted.fKey;
  });
  std::stable_sort(matrix.begin(), matrix.end(),
                   [](const ModelConfusion& left, const ModelConfusion& right) {
                     return left.fCases > right.fCases;
                   });
  return matrix;
}

}  // namespace

ModelSummary ReadModelSummary(const CommandRun& run) {
  ModelSummary summary;
  if (const OutputTable* subsets = run.Find("SubsetSummary")) ReadSteps(*subsets, summary);
  if (const OutputTable* classification = run.Find("Classification")) {
    const Confusions confusions(*classification);
    for (const int sample : confusions.Samples()) {
      summary.fSamples.push_back(confusions.Sample(sample));
      const std::vector<ModelConfusion> matrix = confusions.Matrix(sample);
      summary.fMatrix.insert(summary.fMatrix.end(), matrix.begin(), matrix.end());
      summary.fConfusions = Worst(matrix);
    }
  }
  summary.fLeftOut = LeftOutPredictors(run);
  return summary;
}

}  // namespace PredSelect
