#include "naivebayes/model/NBScaledProducts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "naivebayes/model/NBayesInput.h"

namespace {

// The inner loop with the number of categories known, so that the compiler unrolls it.
template <int kCategories, typename Code>
void MultiplyRows(const NBayesInputBase& input, const Code* codes, std::size_t records,
                  std::size_t categories, double* products) {
  const std::size_t n = kCategories > 0 ? kCategories : categories;
  for (std::size_t i = 0; i < records; ++i, products += n) {
    const double* factors = input.GetFactors(codes[i]);
    for (std::size_t k = 0; k < n; ++k) products[k] *= factors[k];
  }
}

// The same for several inputs at once: each product is read and written once.
template <int kCategories>
void MultiplyTogether(const NBayesInput* inputs, const std::int32_t* codes, std::size_t records,
                      double* products) {
  constexpr std::size_t kTogether = NBScaledProducts::kTogether;
  for (std::size_t i = 0; i < records; ++i, products += kCategories) {
    std::array<double, kCategories> few;
    std::copy_n(products, kCategories, few.begin());
    for (std::size_t j = 0; j < kTogether; ++j) {
      const double* factors = inputs[j].GetFactors(codes[j * records + i]);
      for (std::size_t k = 0; k < kCategories; ++k) few[k] *= factors[k];
    }
    std::copy(few.begin(), few.end(), products);
  }
}

// One record through all inputs, as long as the bound from below of its products stays high enough.
template <int kCategories>
bool MultiplyRecord(const std::vector<NBayesInput>& inputs, const std::int32_t* codes,
                    std::vector<double>& products) {
  const std::size_t n = kCategories > 0 ? kCategories : products.size();
  double least = 1.0;
  for (const double prior : products) least = std::min(least, prior);
  // Few products stay in registers.
  std::array<double, kCategories> few;
  double* values = products.data();
  if constexpr (kCategories > 0) {
    std::copy_n(values, kCategories, few.begin());
    values = few.data();
  }
  for (const NBayesInput& input : inputs) {
    const double* factors = input.GetFactors(*codes++);
    for (std::size_t k = 0; k < n; ++k) values[k] *= factors[k];
    least *= input.GetLeastFactor();
  }
  if constexpr (kCategories > 0) std::copy(few.begin(), few.end(), products.begin());
  return least >= NBScaledProducts::kLookBelow;
}

}  // namespace

void NBScaledProducts::Reset(const std::vector<double>& priors, std::size_t records) {
  fNRecords = records;
  fNCategories = priors.size();
  fvScalings.clear();
  fvAligned.clear();
  fvOffsets.clear();
  fvMantissas.resize(records * fNCategories);
  for (std::size_t i = 0; i < records; ++i) {
    std::copy(priors.begin(), priors.end(), fvMantissas.begin() + i * fNCategories);
  }
  fLeast = priors.empty() ? 1.0 : std::min(1.0, *std::min_element(priors.begin(), priors.end()));
}

void NBScaledProducts::Multiply(const NBayesInputBase& input, NBCodes codes) {
  if (fLeast * input.GetLeastFactor() < kLookBelow) ScaleUp();
  fLeast *= input.GetLeastFactor();
  const auto multiply = [&](const auto* column) {
    double* products = fvMantissas.data();
    switch (fNCategories) {
      case 2:
        return MultiplyRows<2>(input, column, fNRecords, 2, products);
      case 3:
        return MultiplyRows<3>(input, column, fNRecords, 3, products);
      default:
        return MultiplyRows<0>(input, column, fNRecords, fNCategories, products);
    }
  };
  std::visit(multiply, codes);
}

void NBScaledProducts::Multiply(std::span<const NBayesInput> inputs, const std::int32_t* codes) {
  const bool areFew = fNCategories == 2 || fNCategories == 3;
  while (!inputs.empty()) {
    const bool together = areFew && HasRoomFor(inputs);
    const std::size_t n = together ? kTogether : 1;
    if (!together) {
      Multiply(inputs.front(), codes);
    } else {
      for (std::size_t j = 0; j < n; ++j) fLeast *= inputs[j].GetLeastFactor();
      const auto multiply = fNCategories == 2 ? MultiplyTogether<2> : MultiplyTogether<3>;
      multiply(inputs.data(), codes, fNRecords, fvMantissas.data());
    }
    inputs = inputs.subspan(n);
    codes += n * fNRecords;
  }
}

bool NBScaledProducts::HasRoomFor(std::span<const NBayesInput> inputs) const {
  if (inputs.size() < kTogether) return false;
  double least = fLeast;
  for (std::size_t j = 0; j < kTogether; ++j) least *= inputs[j].GetLeastFactor();
  return least >= kLookBelow;
}

bool NBScaledProducts::MultiplyPlain(const std::vector<NBayesInput>& inputs,
                                     const std::int32_t* codes, std::vector<double>& products) {
  switch (products.size()) {
    case 2:
      return MultiplyRecord<2>(inputs, codes, products);
    case 3:
      return MultiplyRecord<3>(inputs, codes, products);
    default:
      return MultiplyRecord<0>(inputs, codes, products);
  }
}

void NBScaledProducts::ScaleUp() {
  fLeast = 1.0;
  for (std::size_t cell = 0; cell < fvMantissas.size(); ++cell) {
    double& mantissa = fvMantissas[cell];
    while (mantissa < kScaleBelow && mantissa > 0) {
      if (fvScalings.empty()) fvScalings.assign(fvMantissas.size(), 0);
      mantissa *= kScale;
      ++fvScalings[cell];
    }
    if (mantissa > 0) fLeast = std::min(fLeast, mantissa);
  }
}

// Every record gets the exponent of its largest product, which leaves the rest all their digits.
void NBScaledProducts::Align() {
  if (fvScalings.empty()) return;
  fvAligned.resize(fvMantissas.size());
  fvOffsets.resize(fNRecords);
  for (std::size_t i = 0; i < fNRecords; ++i) {
    const double* mantissas = &fvMantissas[i * fNCategories];
    const std::int32_t* scalings = &fvScalings[i * fNCategories];
    int largest = std::numeric_limits<int>::min();
    for (std::size_t k = 0; k < fNCategories; ++k) {
      if (mantissas[k] > 0)
        largest = std::max(largest, std::ilogb(mantissas[k]) - kStep * scalings[k]);
    }
    if (largest == std::numeric_limits<int>::min()) largest = 0;
    fvOffsets[i] = largest;
    for (std::size_t k = 0; k < fNCategories; ++k) {
      fvAligned[i * fNCategories + k] = std::ldexp(mantissas[k], -kStep * scalings[k] - largest);
    }
  }
}

double NBScaledProducts::LogOf(std::size_t record, std::size_t category) const {
  constexpr double kLog2 = 0x1.62e42fefa39efp-1;
  const std::size_t cell = record * fNCategories + category;
  int exponent = 0;
  const double fraction = std::frexp(fvMantissas[cell], &exponent);
  if (!fvScalings.empty()) exponent -= kStep * fvScalings[cell];
  return std::log(fraction) + kLog2 * exponent;
}

double NBScaledProducts::SumOf(std::size_t record) const {
  const double* values = Values(record);
  double sum = 0;
  for (std::size_t k = 0; k < fNCategories; ++k) sum += values[k];
  return sum;
}
