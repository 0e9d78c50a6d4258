#include "naivebayes/model/NBayesInputBase.h"

#include <algorithm>
#include <array>
#include <ostream>

#include "common/CountInTurn.h"
#include "naivebayes/NBLoops.h"

void NBayesInputBase::Setup(int categories, int targetCategories) {
  fNCategories = categories;
  fNNonEmpty = 0;
  fNTargets = targetCategories;
  fvCounts.assign(Cell(categories, 0), 0.0);
  fvProbabilities.assign(Cell(categories + 1, 0), 0.0);
  std::fill(fvProbabilities.begin() + Cell(categories, 0), fvProbabilities.end(), 1.0);
}

void NBayesInputBase::Setup(double alpha, const std::vector<std::vector<double>>& counts) {
  std::size_t longest = 0;
  for (const auto& row : counts) longest = std::max(longest, row.size());
  Setup(static_cast<int>(counts.size()), static_cast<int>(longest));
  for (std::size_t m = 0; m < counts.size(); ++m) {
    std::copy(counts[m].begin(), counts[m].end(), fvCounts.begin() + Cell(m, 0));
  }
  ComputeProbabilities(alpha);
}

double NBayesInputBase::GetRowTotal(int category) const {
  double total = 0;
  for (int k = 0; k < fNTargets; ++k) total += GetCount(category, k);
  return total;
}

int NBayesInputBase::ComputeProbabilities(double alpha) {
  std::vector<double> totals(fNTargets, 0.0);
  fNNonEmpty = 0;
  for (int m = 0; m < fNCategories; ++m) {
    fNNonEmpty += GetRowTotal(m) > 0;
    for (int k = 0; k < fNTargets; ++k) totals[k] += GetCount(m, k);
  }
  fLeastFactor = 1.0;
  for (std::size_t cell = 0; cell < fvCounts.size(); ++cell) {
    const double total = totals[cell % fNTargets];
    const double p =
        fNNonEmpty > 0 ? (alpha + fvCounts[cell]) / (fNNonEmpty * alpha + total) : alpha;
    fvProbabilities[cell] = p;
    fLeastFactor = std::min(fLeastFactor, p);
  }
  return fNNonEmpty;
}

void NBayesInputBase::ResetCounts() { std::fill(fvCounts.begin(), fvCounts.end(), 0.0); }

void NBayesInputBase::AddCases(NBCodes codes, const std::int32_t* targets, const double* weights,
                               std::size_t cases) {
  const auto add = [&](const auto* column) {
    double* counts = fvCounts.data();
    for (std::size_t i = 0; i < cases; ++i) {
      if (column[i] >= 0) counts[Cell(column[i], targets[i])] += weights[i];
    }
  };
  std::visit(add, codes);
}

void NBayesInputBase::AddUnitCases(NBCodes codes, const std::int32_t* targets, std::size_t cases) {
  std::visit([&](const auto* column) { TallyUnitCases(column, targets, cases); }, codes);
}

template <typename Code>
void NBayesInputBase::TallyUnitCases(const Code* codes, const std::int32_t* targets,
                                     std::size_t cases) {
  // Tables with a first row for missing codes; whole numbers give the same sums in any order.
  const std::size_t cells = Cell(fNCategories + 1, 0);
  if (cells > cases) {  // not worth more tables
    for (std::size_t i = 0; i < cases; ++i) {
      if (codes[i] >= 0) AddCount(codes[i], targets[i], 1.0);
    }
    return;
  }
  constexpr std::size_t kTables = MCCommon::kTablesInTurn;
  const std::size_t tables = kTables * cells <= cases ? kTables : 1;
  std::vector<std::uint32_t> tallies(tables * cells);
  std::array<std::int32_t, 256> widened;
  for (std::size_t from = 0; from < cases; from += widened.size()) {
    const std::size_t batch = std::min(widened.size(), cases - from);
    std::copy_n(codes + from, batch, widened.begin());
    NBLoops::InUse().fTally(widened.data(), targets + from, batch, fNTargets, tables, cells,
                            tallies.data());
  }
  for (std::size_t table = 0; table < tables; ++table) {
    const std::uint32_t* counts = &tallies[table * cells + static_cast<std::size_t>(fNTargets)];
    for (std::size_t cell = 0; cell < fvCounts.size(); ++cell) fvCounts[cell] += counts[cell];
  }
}

void NBayesInputBase::Grow(int categories, int targetCategories) {
  const NBayesInputBase old = *this;
  Setup(std::max(categories, fNCategories), std::max(targetCategories, fNTargets));
  fNNonEmpty = old.fNNonEmpty;
  std::fill(fvProbabilities.begin(), fvProbabilities.end(), 1.0);
  for (int m = 0; m < old.fNCategories; ++m) {
    const auto from = static_cast<std::ptrdiff_t>(old.Cell(m, 0)), to = from + old.fNTargets;
    const auto row = static_cast<std::ptrdiff_t>(Cell(m, 0));
    std::copy(old.fvCounts.begin() + from, old.fvCounts.begin() + to, fvCounts.begin() + row);
    std::copy(old.fvProbabilities.begin() + from, old.fvProbabilities.begin() + to,
              fvProbabilities.begin() + row);
  }
}

void NBayesInputBase::AddCount(int category, int target, double weight) {
  fvCounts[Cell(category, target)] += weight;
}

void NBayesInputBase::AddCounts(const std::vector<double>& table) {
  for (std::size_t cell = 0; cell < fvCounts.size(); ++cell) fvCounts[cell] += table[cell];
}

void NBayesInputBase::Display(std::ostream& os) const {
  os << "Predictor categories " << fNCategories << ", non-empty " << fNNonEmpty << '\n';
  for (int m = 0; m < fNCategories; ++m) {
    os << m << ':';
    for (int k = 0; k < fNTargets; ++k) {
      os << ' ' << GetCount(m, k) << " (" << GetProbability(m, k) << ')';
    }
    os << '\n';
  }
}
