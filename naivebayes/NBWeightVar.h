// The frequency weight of the records.
#pragma once

#include <string>

#include "naivebayes/INBVariable.h"
#include "naivebayes/NBRoundEncoder.h"

class NBWeightVar : public INBVariable {
 public:
  NBWeightVar(const std::string& name, const std::string& label, NBWRoundingOption rounding)
      : INBVariable(name, label, kFrequencyWeight), fEncoder(rounding) {}

  MeasureLevel GetMeasureLevel() const override { return kWeightLevel; }
  int GetNumberOfCategories() const override { return 0; }
  std::unique_ptr<INBVariable> Clone() const override {
    return std::make_unique<NBWeightVar>(*this);
  }
  const NBRoundEncoder* GetEncoder() const override { return &fEncoder; }
  NBRoundEncoder* GetEncoder() override { return &fEncoder; }
  VarStatus GetVarStatus() override { return kUsable; }

 private:
  NBRoundEncoder fEncoder;
};
