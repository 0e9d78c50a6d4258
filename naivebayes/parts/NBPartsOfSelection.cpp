#include "naivebayes/parts/NBPartsOfSelection.h"

#include <algorithm>
#include <utility>

NBPartsOfSelection::NBPartsOfSelection(INBParts& parts, NBPartCounts counts, std::vector<int> kept)
    : fParts(parts), fCounts(std::move(counts)), fvKept(std::move(kept)) {}

NBPartQuestion NBPartsOfSelection::QuestionOn(const std::vector<int>& order,
                                              const std::vector<int>& candidates) const {
  NBPartQuestion question;
  question.fModel = fCounts;
  question.fModel.fInputs.assign(fCounts.fInputs.size(), {});
  const auto name = [&](const std::vector<int>& inputs, std::vector<int>& named) {
    for (const int input : inputs) {
      const auto place = static_cast<std::size_t>(fvKept[static_cast<std::size_t>(input)]);
      named.push_back(static_cast<int>(place));
      question.fModel.fInputs[place] = fCounts.fInputs[place];
    }
  };
  name(order, question.fOrder);
  name(candidates, question.fCandidates);
  return question;
}

bool NBPartsOfSelection::Ask(const NBPartQuestion& question, std::size_t sums,
                             std::vector<double>& totals, NBSum& weight) {
  NBPartSums answer;
  if (!fParts.Ask(question, answer) || answer.fSums.size() != sums) return false;
  if (answer.fNCases != (question.fbTest ? fCounts.fNTest : fCounts.fNRecords)) return false;
  weight = answer.fWeight;
  totals.clear();
  for (const NBSum& sum : answer.fSums) totals.push_back(sum.Total());
  return true;
}

bool NBPartsOfSelection::ComputeBJ(const std::vector<int>& candidates, std::vector<double>& out,
                                   double& common) {
  NBSum weight;
  common = 0;
  if (!Ask(QuestionOn(fvCurrent, candidates), candidates.size(), out, weight)) return false;
  for (double& term : out) term = -term / fCounts.fWeight;
  return true;
}

bool NBPartsOfSelection::SumTerms(const std::vector<int>& order, int first, bool test,
                                  std::vector<double>& totals, NBSum& weight) {
  NBPartQuestion question = QuestionOn(order, {});
  question.fFirst = first;
  question.fbTest = test;
  const int sizes = std::max(static_cast<int>(order.size()) - first + 1, 0);
  return Ask(question, static_cast<std::size_t>(sizes), totals, weight);
}
