#include "naivebayes/selection/NBOdds.h"

#include <algorithm>
#include <array>

#include "naivebayes/NBLoops.h"
#include "naivebayes/model/NBayesInputBase.h"

namespace {

constexpr std::size_t kBatch = 256;

// To whole rounds of eight.
constexpr std::size_t RoundUp(std::size_t cases) { return (cases + 7) / 8 * 8; }

bool AreOnes(const double* weights, std::size_t n) {
  unsigned others = 0;
  for (std::size_t i = 0; i < n; ++i) others |= weights[i] != 1.0 ? 1 : 0;
  return others == 0;
}

// The sum of products of two rows, in four places in turn.
double SumProducts(const double* values, const double* factors, std::size_t categories) {
  double sum = 0;
  double places[4] = {};
  std::size_t k = 0;
  for (; k + 4 <= categories; k += 4) {
    for (int place = 0; place < 4; ++place) places[place] += values[k + place] * factors[k + place];
  }
  for (; k < categories; ++k) sum += values[k] * factors[k];
  return sum + ((places[0] + places[1]) + (places[2] + places[3]));
}

}  // namespace

void NBOdds::Reset(const std::vector<double>& priors, const std::int32_t* targets,
                   std::size_t cases) {
  fOthers.Reset(priors, cases);
  fvOwn.resize(cases);
  fvScalings.clear();
  fLeast = 1;
  for (std::size_t i = 0; i < cases; ++i) {
    fvOwn[i] = priors[targets[i]];
    fLeast = std::min(fLeast, fvOwn[i]);
    fOthers.Exclude(i, targets[i]);
  }
}

void NBOdds::Multiply(const NBayesInputBase& input, NBCodes codes, const std::int32_t* targets) {
  fOthers.Multiply(input, codes);
  if (fLeast * input.GetLeastFactor() < NBScaledProducts::kLookBelow) ScaleUpOwn();
  fLeast *= input.GetLeastFactor();
  const auto multiply = [&](const auto* column) {
    for (std::size_t i = 0; i < fvOwn.size(); ++i) {
      fvOwn[i] *= input.GetFactors(column[i])[targets[i]];
    }
  };
  std::visit(multiply, codes);
}

void NBOdds::ScaleUpOwn() {
  fLeast = 1;
  for (std::size_t i = 0; i < fvOwn.size(); ++i) {
    while (fvOwn[i] < NBScaledProducts::kScaleBelow && fvOwn[i] > 0) {
      if (fvScalings.empty()) fvScalings.assign(fvOwn.size(), 0);
      fvOwn[i] *= NBScaledProducts::kScale;
      ++fvScalings[i];
    }
    fLeast = std::min(fLeast, fvOwn[i]);
  }
}

void NBOdds::AddTerms(const double* weights, NBOddsSum& sum) const {
  for (std::size_t i = 0; i < fvOwn.size(); ++i) {
    sum.Add(fOthers.SumOf(i) / fvOwn[i], ExponentOf(i), weights[i]);
  }
}

void NBOdds::DivideByOwn(const std::int32_t* targets) {
  const std::size_t cases = fvOwn.size(), nOthers = fOthers.Categories() - 1;
  fvOdds.clear();
  if (!NBOddsRatios::Serve(fOthers.Categories())) return;
  const std::size_t stride = RoundUp(cases);
  fvOdds.assign(stride * nOthers, 0.0);
  for (std::size_t i = 0; i < cases; ++i) {
    const double* values = fOthers.Values(i);
    const auto own = static_cast<std::size_t>(targets[i]);
    for (std::size_t other = 0; other < nOthers; ++other) {
      fvOdds[other * stride + i] = values[other < own ? other : other + 1] / fvOwn[i];
    }
  }
}

void NBOdds::AddTerms(const NBOddsRatios& ratios, NBCodes codes, const std::int32_t* targets,
                      const double* weights, NBOddsSum& sum) const {
  const std::size_t cases = fvOwn.size();
  const bool isPlain = fvScalings.empty() && fOthers.IsPlain();
  NBOddsSum local = sum;  // which no pointer can reach
  // Behind the last case stand some that are not looked at.
  std::array<std::int32_t, kBatch> itsCodes{}, itsTargets{};
  std::array<double, kBatch> odds;
  for (std::size_t first = 0; first < cases; first += kBatch) {
    const std::size_t n = std::min(kBatch, cases - first);
    std::visit([&](const auto* column) { std::copy_n(column + first, n, itsCodes.begin()); },
               codes);
    std::copy_n(targets + first, n, itsTargets.begin());
    const double largest = NBLoops::InUse().fFindOdds(
        RoundUp(n), itsCodes.data(), itsTargets.data(), static_cast<int>(fOthers.Categories()),
        &fvOdds[first], RoundUp(cases), ratios.Data(), ratios.Stride(), odds.data());
    if (isPlain && largest <= NBOddsSum::kMostOdds && AreOnes(weights + first, n)) {
      local.AddRun(n, odds.data());
    } else {
      for (std::size_t i = 0; i < n; ++i) {
        local.Add(odds[i], ExponentOf(first + i), weights[first + i]);
      }
    }
  }
  sum = local;
}

void NBOdds::AddTerms(const NBayesInputBase& input, NBCodes codes, const std::int32_t* targets,
                      const double* weights, NBOddsSum& sum) const {
  const auto walk = [&](const auto* column) {
    NBOddsSum local = sum;
    for (std::size_t i = 0; i < fvOwn.size(); ++i) {
      const double* factors = input.GetFactors(column[i]);
      const double others = SumProducts(fOthers.Values(i), factors, fOthers.Categories());
      local.Add(others / (fvOwn[i] * factors[targets[i]]), ExponentOf(i), weights[i]);
    }
    sum = local;
  };
  std::visit(walk, codes);
}
