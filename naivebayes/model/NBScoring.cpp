#include "naivebayes/model/NBScoring.h"

#include <algorithm>

#include "naivebayes/model/NBCalibration.h"
#include "naivebayes/model/NBScaledProducts.h"
#include "naivebayes/model/NBayesOutput.h"

namespace {

// The values may be those that are written.
void NormalizeInto(const double* values, std::span<double> out) {
  double sum = 0;
  for (std::size_t k = 0; k < out.size(); ++k) sum += values[k];
  for (std::size_t k = 0; k < out.size(); ++k) out[k] = sum > 0 ? values[k] / sum : 0.0;
}

}  // namespace

namespace NBScoring {

void Normalize(const NBScaledProducts& products, std::size_t record, std::span<double> out) {
  NormalizeInto(products.Values(record), out);
}

void Normalize(std::span<double> values) { NormalizeInto(values.data(), values); }

int SelectWinner(std::span<const double> probabilities, const NBayesOutput& output) {
  const int n = static_cast<int>(probabilities.size());
  if (n < 2) return 0;
  // Without a branch on the data, which random classes would mispredict.
  int first = 0;
  double largest = probabilities[0];
  for (int i = 1; i < n; ++i) {
    const bool isLarger = probabilities[i] > largest;
    first = isLarger ? i : first;
    largest = isLarger ? probabilities[i] : largest;
  }
  int nLargest = 0;
  for (const double probability : probabilities) nLargest += probability == largest ? 1 : 0;
  if (nLargest < 2) return first;
  // The tied ones are those after category 0; the first of them is passed over.
  int winner = first;
  bool passed = false;
  for (int i = std::max(first, 1); i < n; ++i) {
    if (probabilities[i] != probabilities[first]) continue;
    if (passed && output.GetCount(i) > output.GetCount(winner)) winner = i;
    passed = true;
  }
  return winner;
}

int Decide(const NBScaledProducts& products, std::size_t record, const NBayesOutput& output,
           const NBCalibration& calibration, std::span<double> out) {
  Normalize(products, record, out);
  const int winner = SelectWinner(out, output);
  switch (calibration.GetMethod()) {
    case NBCalibration::kTemperature:
      for (std::size_t k = 0; k < out.size(); ++k) out[k] = products.LogOf(record, k);
      calibration.ApplyToLogs(out);
      return winner;
    case NBCalibration::kIsotonic:
      calibration.ApplyToPosteriors(out);
      return SelectWinner(out, output);
    default:
      return winner;
  }
}

}  // namespace NBScoring
