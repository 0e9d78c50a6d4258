// Makes Naive Bayes components.
#pragma once

#include <iosfwd>
#include <memory>

#include "naivebayes/INBAlgorithm.h"
#include "naivebayes/MCStatus.h"

struct NBModelCounts;

class NBFactory {
 public:
  // A component with copies of the settings and the list; null, with status 3, when the list has no
  // categorical target or a variable in use is constant or empty, 70021 for want of memory, and,
  // with the variable's index as datum 0: 70023 user-missing values that no value can meet, 70024
  // a second target or weight, 70025 a continuous input without bins.
  std::unique_ptr<INBAlgorithm> CreateNBAlgorithm(NaiveBayesSettings& settings, NBVarList& varList);

  // A component as INBAlgorithm::SaveState or SaveStateXML wrote it, which goes on where that one
  // was; null, with status 2, when the stream is not good, does not hold one, or holds a damaged
  // one or one that the memory cannot hold.
  std::unique_ptr<INBAlgorithm> RestoreNBAlgorithmFromBinary(std::fstream& is);
  std::unique_ptr<INBAlgorithm> RestoreNBAlgorithmFromXML(std::ifstream& is);

  // The built model of the counts, over a copy of the list: the estimates are those of a training
  // that counted the same. Null, with status 2, for counts that are none of a model.
  // REQUIRES: a table of rows times target categories for each input of the list.
  std::unique_ptr<INBAlgorithm> RestoreFromCounts(const NBVarList& variables,
                                                  const NBModelCounts& counts);

  // The status of the last call.
  const MCNaive::MCStatus& GetStatus() const { return fStatus; }

 private:
  template <class Stream, class Read>
  std::unique_ptr<INBAlgorithm> Restore(const Stream& is, Read read);

  MCNaive::MCStatus fStatus;
};
