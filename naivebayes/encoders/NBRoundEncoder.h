// Rounding of frequency weights. A weight that is not above 0 after rounding is missing, so that
// zero and negative weights leave the record out.
#pragma once

#include <iosfwd>
#include <utility>

#include "naivebayes/encoders/INBEncoder.h"
#include "naivebayes/variables/INBVariable.h"

class NBRoundEncoder : public INBEncoder {
 public:
  explicit NBRoundEncoder(INBVariable::NBWRoundingOption rounding) : fRounding(rounding) {}

  // The rounded weight (or the missing value) and the value it came from.
  std::pair<double, double> Encode(double value) const;

  INBVariable::NBWRoundingOption GetRoundingOption() const { return fRounding; }

  EncoderType GetEncoderType() const override { return kRound; }
  int GetNumberOfCategories() const override { return 0; }
  std::unique_ptr<INBEncoder> Clone() const override;
  int WriteObject(std::fstream& os) const override;
  int ReadObject(std::fstream& is) override;
  void WriteObjectXML(std::ostream& os, int indent) const override;
  void ReadObjectXML(std::ifstream& is) override;
  void Display(std::ostream& os) const override;

 private:
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
  INBVariable::NBWRoundingOption fRounding;
};
