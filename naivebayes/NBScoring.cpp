#include "naivebayes/NBScoring.h"

#include "naivebayes/NBScaledProducts.h"
#include "naivebayes/NBayesOutput.h"

namespace NBScoring {

void Normalize(const NBScaledProducts& products, std::size_t record, std::vector<double>& out) {
  const double sum = products.SumOf(record);
  const double* values = products.Values(record);
  for (std::size_t k = 0; k < out.size(); ++k) out[k] = sum > 0 ? values[k] / sum : 0.0;
}

int SelectWinner(const std::vector<double>& probabilities, const NBayesOutput& output) {
  const int n = static_cast<int>(probabilities.size());
  if (n < 2) return 0;
  int winner = 0;
  std::vector<int> ties;
  for (int i = 1; i < n; ++i) {
    if (probabilities[i] > probabilities[winner]) {
      winner = i;
      ties.assign(1, i);
    } else if (probabilities[i] == probabilities[winner]) {
      ties.push_back(i);
    }
  }
  double best = output.GetCount(winner);
  for (std::size_t t = 1; t < ties.size(); ++t) {
    if (output.GetCount(ties[t]) > best) {
      winner = ties[t];
      best = output.GetCount(winner);
    }
  }
  return winner;
}

}  // namespace NBScoring
