// The cases of a part as category codes, those that train a model and those that test it: what a
// part keeps while predictors are chosen, a byte or two a case and predictor.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "common/Workers.h"
#include "naivebayes/NBCancelInfo.h"
#include "naivebayes/parts/NBPartSums.h"
#include "naivebayes/store/NBMemoryStore.h"

class NBDataSteps;

class NBPartCodes {
 public:
  // Codes of inputs of so many categories each; `hasWeight`: of cases that are weighted.
  NBPartCodes(int targets, std::vector<int> categories, bool hasWeight);
  ~NBPartCodes();

  // Takes all cases of a source. False where it failed.
  [[nodiscard]] bool Add(NBCodeSource& source, bool test);

  std::int64_t GetNTest() const { return fNTest; }

  // As bytes, in the machine's byte order, and back; null for bytes that are none of a part's
  // codes.
  std::string Bytes() const;
  static std::unique_ptr<NBPartCodes> From(std::string_view bytes);

  // The sums that are asked for. False for a question about other inputs, and after a cancel. Where
  // one step follows the other, products of at most `mostKept` bytes are kept from one to the next,
  // and `cancel` and `workers` with them: they must live as long.
  [[nodiscard]] bool Answer(const NBPartQuestion& question, NBCancelInfo& cancel,
                            MCCommon::Workers& workers, NBPartSums& sums, std::size_t mostKept = 0);

 private:
  struct Model;
  struct Steps;
  // The steps that have led to a question, of what is kept or from the start.
  NBDataSteps& StepsTo(const NBPartQuestion& question, NBCancelInfo& cancel,
                       MCCommon::Workers& workers, std::size_t mostKept);
  bool IsOfThese(const NBPartQuestion& question) const;

  int fNTargets;
  std::vector<int> fvCategories;
  bool fbHasWeight;
  NBMemoryStore fTraining;
  NBMemoryStore fTest;
  std::int64_t fNTraining = 0;
  std::int64_t fNTest = 0;
  std::unique_ptr<Steps> fpSteps;
};
