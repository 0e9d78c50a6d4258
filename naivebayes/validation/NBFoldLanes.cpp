#include "naivebayes/validation/NBFoldLanes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>

#include "naivebayes/NBLoops.h"

namespace {

constexpr std::size_t kChunk = 512;
constexpr std::size_t kMostRatioTargets = 4;
// Logarithms are taken beyond the first; beyond the second a product may have overflowed.
constexpr double kMostProduct = 0x1p60, kMostSafe = 0x1p900;
constexpr double kMostOdds = 1e250, kLeastOdds = 1e-290;

std::size_t SlotsOf(std::size_t categories) {
  return categories <= kMostRatioTargets ? categories - 1 : categories;
}

bool AreOnes(const double* weights, std::size_t n) {
  return std::all_of(weights, weights + n, [](double weight) { return weight == 1.0; });
}

}  // namespace

struct NBFoldLanes::Chunk {
  NBCodeBlock fCodes;
  std::size_t fFirst = 0;  // case of the pass
  bool fbUnitWeights = true;
};

std::size_t NBFoldLanes::MostLanes(std::size_t cases, std::size_t categories, std::size_t bytes) {
  constexpr std::size_t kVector = 8;
  const std::size_t aLane = std::max<std::size_t>(cases * SlotsOf(categories), 1) * sizeof(double);
  return std::clamp<std::size_t>(bytes / aLane / kVector * kVector, kVector, 4 * kVector);
}

NBFoldLanes::NBFoldLanes(const std::vector<Lane>& lanes, NBCodeStore& records, std::size_t cases,
                         NBCancelInfo& cancel, MCCommon::Workers& workers)
    : fvLanes(lanes),
      fRecords(records),
      fCancel(cancel),
      fWorkers(workers),
      fNTargets(lanes.front().fpModel->View().fOutput.GetPriors().size()),
      fbRatios(fNTargets <= kMostRatioTargets),
      fNSlots(SlotsOf(fNTargets)) {
  const std::size_t wide = NBLoops::InUse().fNLanes;
  fNLanes = (lanes.size() + wide - 1) / wide * wide;
  fvOdds.assign(cases * fNSlots * fNLanes, 0.0);
  const std::size_t nInputs = lanes.front().fpModel->View().fInputs.size();
  for (std::size_t j = 0; j < nInputs; ++j) {
    fvTables.push_back(MakeTable(static_cast<int>(j), std::vector<char>(lanes.size(), 1)));
  }
  fvTables.push_back(MakeTable(-1, {}));
  // Of the priors; the records were read before, to be dealt.
  std::ignore = ForEachChunk([this](const Chunk& chunk) {
    SetOdds(chunk.fCodes, chunk.fFirst);
    return true;
  });
}

template <class Visit>
bool NBFoldLanes::ForEachChunk(Visit visit) {
  if (!fRecords.NewPass()) return false;
  Chunk chunk;
  while (!fCancel.IsCancel()) {
    const NBCodeBlock* codes = fRecords.NextCodes();
    if (codes == nullptr) return !fRecords.HasFailed();
    for (std::size_t first = 0; first < codes->Cases(); first += kChunk) {
      chunk.fCodes.Take(*codes, first, kChunk);
      chunk.fbUnitWeights = AreOnes(chunk.fCodes.Weights(), chunk.fCodes.Cases());
      if (!visit(chunk)) return false;
      chunk.fFirst += chunk.fCodes.Cases();
    }
  }
  return true;
}

void NBFoldLanes::SetOdds(const NBCodeBlock& codes, std::size_t first) {
  for (std::size_t lane = 0; lane < fvLanes.size(); ++lane) {
    const std::vector<double>& priors = fvLanes[lane].fpModel->View().fOutput.GetPriors();
    const std::vector<std::int32_t>& folds = *fvLanes[lane].fpFolds;
    for (std::size_t i = 0; i < codes.Cases(); ++i) {
      if (folds[first + i] == fvLanes[lane].fFold) continue;
      const auto own = static_cast<std::size_t>(codes.Targets()[i]);
      double* odds = &fvOdds[(first + i) * fNSlots * fNLanes + lane];
      for (std::size_t k = 0; k < fNTargets; ++k) {
        if (k == own) continue;
        const std::size_t slot = fbRatios && k > own ? k - 1 : k;
        odds[slot * fNLanes] = priors[k] / priors[own];
      }
    }
  }
}

NBFoldLanes::Table NBFoldLanes::MakeTable(int input, const std::vector<char>& isEntered) const {
  const auto j = static_cast<std::size_t>(input);
  const std::vector<NBayesInput>& inputs = fvLanes.front().fpModel->View().fInputs;
  const int nCodes = input < 0 ? 1 : inputs[j].GetNCategories() + 1;
  const std::size_t owns = static_cast<std::size_t>(nCodes) * fNTargets;
  Table table;
  table.fFactors.assign((fbRatios ? owns : static_cast<std::size_t>(nCodes)) * fNSlots * fNLanes,
                        1.0);
  if (!fbRatios) table.fInverse.assign(owns * fNLanes, 1.0);
  for (std::size_t lane = 0; lane < isEntered.size(); ++lane) {
    if (isEntered[lane] == 0) continue;
    const NBayesInput& counts = fvLanes[lane].fpModel->View().fInputs[j];
    for (std::size_t row = 0; row < owns; ++row) {
      const double* factors = counts.GetFactors(static_cast<std::int32_t>(row / fNTargets) - 1);
      const std::size_t own = row % fNTargets;
      if (!fbRatios) {
        table.fFactors[row * fNLanes + lane] = factors[own];
        table.fInverse[row * fNLanes + lane] = 1.0 / factors[own];
        continue;
      }
      double* ratios = &table.fFactors[row * fNSlots * fNLanes + lane];
      for (std::size_t s = 0; s < fNSlots; ++s) {
        ratios[s * fNLanes] = factors[s < own ? s : s + 1] / factors[own];
      }
    }
  }
  return table;
}

void NBFoldLanes::Enter(const std::vector<int>& inputs) {
  std::vector<int> distinct = inputs;
  std::ranges::sort(distinct);
  distinct.erase(std::unique(distinct.begin(), distinct.end()), distinct.end());
  std::erase(distinct, -1);
  std::vector<Table> tables;
  for (const int input : distinct) {
    std::vector<char> isEntered;
    for (const int own : inputs) isEntered.push_back(own == input);
    tables.push_back(MakeTable(input, isEntered));
  }
  std::ignore = ForEachChunk([&](const Chunk& chunk) {
    for (std::size_t t = 0; t < tables.size(); ++t) Multiply(tables[t], chunk, distinct[t]);
    return true;
  });
}

void NBFoldLanes::Multiply(const Table& table, const Chunk& chunk, int input) {
  const std::size_t cases = chunk.fCodes.Cases();
  Rows rows;
  for (std::size_t first = 0; first < cases; first += kRound) {
    const std::size_t n = std::min(kRound, cases - first);
    FindRows(chunk, first, n, input, rows);
    NBLoops::InUse().fMultiplyOdds(n, TablesOf(table), CodesOf(rows), rows.fRows.data(), kLeastOdds,
                                   kMostOdds, &fvOdds[(chunk.fFirst + first) * fNSlots * fNLanes]);
  }
}

NBLoops::LaneTables NBFoldLanes::TablesOf(const Table& table) const {
  return {table.fFactors.data(), fbRatios ? nullptr : table.fInverse.data(), fNSlots, fNLanes};
}

const std::size_t* NBFoldLanes::CodesOf(const Rows& rows) const {
  return fbRatios ? rows.fRows.data() : rows.fCodes.data();
}

void NBFoldLanes::FindRows(const Chunk& chunk, std::size_t first, std::size_t n, int input,
                           Rows& rows) const {
  const std::int32_t* targets = chunk.fCodes.Targets() + first;
  const auto find = [&](const auto* column) {
    for (std::size_t i = 0; i < n; ++i) {
      rows.fCodes[i] = static_cast<std::size_t>(column[first + i] + 1);
      rows.fRows[i] = rows.fCodes[i] * fNTargets + static_cast<std::size_t>(targets[i]);
    }
  };
  if (input >= 0) return std::visit(find, chunk.fCodes.Codes(input));
  std::fill_n(rows.fCodes.begin(), n, 0);
  std::copy_n(targets, n, rows.fRows.begin());
}

bool NBFoldLanes::SumTerms(const std::vector<int>& inputs, std::vector<std::vector<double>>& out) {
  Sums none;
  none.fProducts.assign(NBLoops::kPlaces * fNLanes, 0.0);
  none.fTotals.resize(fNLanes);
  std::vector<Sums> sums(inputs.size(), none);
  const bool isRead = ForEachChunk([&](const Chunk& chunk) {
    const std::size_t work = chunk.fCodes.Cases() * fNLanes * fNSlots * inputs.size();
    fWorkers.For(work).ForEach(
        inputs.size(),
        [&](std::size_t c, std::size_t) {
          const bool isNone = inputs[c] < 0;
          const Table& table =
              isNone ? fvTables.back() : fvTables[static_cast<std::size_t>(inputs[c])];
          AddTerms(table, chunk, inputs[c], sums[c]);
        },
        [this] { return fCancel.IsCancel(); });
    return true;
  });
  out.assign(inputs.size(), std::vector<double>(fvLanes.size(), 0.0));
  for (std::size_t c = 0; c < inputs.size(); ++c) {
    Flush(sums[c]);
    for (std::size_t lane = 0; lane < fvLanes.size(); ++lane) {
      out[c][lane] = sums[c].fTotals[lane].Total();
    }
  }
  return isRead;
}

void NBFoldLanes::AddTerms(const Table& table, const Chunk& chunk, int input, Sums& sums) const {
  const std::size_t cases = chunk.fCodes.Cases();
  Rows rows;
  for (std::size_t first = 0; first < cases; first += kRound) {
    const std::size_t n = std::min(kRound, cases - first);
    FindRows(chunk, first, n, input, rows);
    AddRound(table, chunk, first, n, rows, sums);
  }
}

void NBFoldLanes::AddRound(const Table& table, const Chunk& chunk, std::size_t first, std::size_t n,
                           const Rows& rows, Sums& sums) const {
  if (!chunk.fbUnitWeights) {
    return AddOneByOne(table, chunk, first, n, rows, sums);
  }
  sums.fBefore = sums.fProducts;
  NBLoops::InUse().fMultiplyUpLanes(n, TablesOf(table),
                                    &fvOdds[(chunk.fFirst + first) * fNSlots * fNLanes],
                                    CodesOf(rows), rows.fRows.data(), sums.fProducts.data());
  int nUnsafe = 0;
  int nLarge = 0;
  for (const double product : sums.fProducts) {
    nUnsafe += product <= kMostSafe ? 0 : 1;  // and for NaN
    nLarge += product > kMostProduct ? 1 : 0;
  }
  if (nUnsafe > 0) {
    sums.fProducts = sums.fBefore;
    return AddOneByOne(table, chunk, first, n, rows, sums);
  }
  if (nLarge > 0) Flush(sums);
}

void NBFoldLanes::AddOneByOne(const Table& table, const Chunk& chunk, std::size_t first,
                              std::size_t n, const Rows& rows, Sums& sums) const {
  const std::size_t width = fNSlots * fNLanes;
  for (std::size_t i = 0; i < n; ++i) {
    const double* odds = &fvOdds[(chunk.fFirst + first + i) * width];
    const double* factors = &table.fFactors[CodesOf(rows)[i] * width];
    for (std::size_t lane = 0; lane < fvLanes.size(); ++lane) {
      double sum = 0.0;
      for (std::size_t s = 0; s < fNSlots; ++s) {
        sum += odds[s * fNLanes + lane] * factors[s * fNLanes + lane];
      }
      if (!fbRatios) sum *= table.fInverse[rows.fRows[i] * fNLanes + lane];
      if (sum > 0.0) sums.fTotals[lane].Add(chunk.fCodes.Weights()[first + i] * std::log1p(sum));
    }
  }
}

void NBFoldLanes::Flush(Sums& sums) const {
  for (std::size_t place = 0; place < NBLoops::kPlaces; ++place) {
    for (std::size_t lane = 0; lane < fvLanes.size(); ++lane) {
      sums.fTotals[lane].Add(std::log1p(sums.fProducts[place * fNLanes + lane]));
    }
  }
  std::ranges::fill(sums.fProducts, 0.0);
}
