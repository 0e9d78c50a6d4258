// Classes of which training saw no case, and how often they are predicted all the same.
//
// A model knows such a class where test cases had it. Its prior and its probabilities are the small
// ones that the estimates give to what was not seen, which a case can bring to the top.
#pragma once

#include <cstdint>
#include <vector>

class INBAlgorithm;
class NBScoredBlock;

namespace PredSelect {

class UnseenClasses {
 public:
  // The model is borrowed. REQUIRES: it was built.
  explicit UnseenClasses(const INBAlgorithm& model);

  void Count(const NBScoredBlock& scored);

  // Shows a note in the current run where there is such a class, and warns where one is predicted.
  void Show() const;

 private:
  const INBAlgorithm& fModel;
  std::vector<int> fClasses;
  std::vector<char> fIsUnseen;  // by class
  std::int64_t fNPredicted = 0;
  std::int64_t fNTied = 0;  // of these, cases in which another class is as likely
};

}  // namespace PredSelect
