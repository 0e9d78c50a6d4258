#include "naivebayes/selection/NBSizeTerms.h"

#include <algorithm>
#include <cstddef>

#include "naivebayes/selection/NBChunks.h"
#include "naivebayes/selection/NBOdds.h"
#include "naivebayes/selection/NBOddsSum.h"

namespace NBSizeTerms {

bool Sum(const NBModelView& model, const std::vector<int>& order, int first, NBCodeSource& source,
         NBCancelInfo& cancel, std::vector<double>& totals, NBSum& weight) {
  const int last = static_cast<int>(order.size());
  std::vector<NBOddsSum> sums(static_cast<std::size_t>(std::max(last - first + 1, 0)));
  NBChunks chunks(model.fOutput.GetNCategories());
  NBOdds odds;
  const auto addChunk = [&](const NBCodeBlock& codes) {
    for (std::size_t i = 0; i < codes.Cases(); ++i) weight.Add(codes.Weights()[i]);
    odds.Reset(model.fOutput.GetPriors(), codes.Targets(), codes.Cases());
    for (int s = 1; s <= last && !cancel.IsCancel(); ++s) {
      const int j = order[s - 1];
      odds.Multiply(model.fInputs[j], codes.Codes(j), codes.Targets());
      if (s < first) continue;
      odds.Align();
      odds.AddTerms(codes.Weights(), sums[s - first]);
    }
    return !cancel.IsCancel();
  };
  while (!cancel.IsCancel()) {
    const NBCodeBlock* codes = source.NextCodes();
    if (codes == nullptr) break;
    if (!chunks.ForEach(*codes, addChunk)) return false;
  }
  for (const NBOddsSum& sum : sums) totals.push_back(sum.Total());
  return !source.HasFailed() && !cancel.IsCancel();
}

}  // namespace NBSizeTerms
