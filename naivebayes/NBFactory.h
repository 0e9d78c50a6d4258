// Makes Naive Bayes components.
#pragma once

#include <memory>

#include "naivebayes/INBAlgorithm.h"
#include "naivebayes/MCStatus.h"

class NBFactory {
 public:
  // A component with copies of the settings and the list; null, with status 3, when the list has no
  // target or a variable in use is constant or empty.
  std::unique_ptr<INBAlgorithm> CreateNBAlgorithm(NaiveBayesSettings& settings, NBVarList& varList);

  // The status of the last call.
  const MCNaive::MCStatus& GetStatus() const { return fStatus; }

 private:
  MCNaive::MCStatus fStatus;
};
