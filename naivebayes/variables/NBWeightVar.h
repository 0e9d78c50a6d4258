// The frequency weight of the records.
#pragma once

#include <iosfwd>
#include <string>

#include "naivebayes/encoders/NBRoundEncoder.h"
#include "naivebayes/variables/INBVariable.h"

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
  int WriteObject(std::fstream& os) const override;
  int ReadObject(std::fstream& is) override;
  void WriteObjectXML(std::ostream& os, int indent) const override;
  void ReadObjectXML(std::ifstream& is) override;

 private:
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);

  NBRoundEncoder fEncoder;
};
