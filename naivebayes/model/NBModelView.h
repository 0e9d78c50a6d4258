// The tables of a model as selection sees them; they stay their owner's.
#pragma once

#include <vector>

#include "naivebayes/model/NBayesInput.h"
#include "naivebayes/model/NBayesOutput.h"

struct NBModelView {
  const NBayesOutput& fOutput;
  const std::vector<NBayesInput>& fInputs;
};
