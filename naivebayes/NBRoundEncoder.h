// Rounding of frequency weights. A weight that is not above 0 after rounding is missing, so that
// zero and negative weights leave the record out.
#pragma once

#include <utility>

#include "naivebayes/INBEncoder.h"
#include "naivebayes/INBVariable.h"

class NBRoundEncoder : public INBEncoder {
 public:
  explicit NBRoundEncoder(INBVariable::NBWRoundingOption rounding) : fRounding(rounding) {}

  // The rounded weight (or the missing value) and the value it came from.
  std::pair<double, double> Encode(double value) const;

  INBVariable::NBWRoundingOption GetRoundingOption() const { return fRounding; }

  EncoderType GetEncoderType() const override { return kRound; }
  int GetNumberOfCategories() const override { return 0; }
  std::unique_ptr<INBEncoder> Clone() const override;
  void Display(std::ostream& os) const override;

 private:
  INBVariable::NBWRoundingOption fRounding;
};
