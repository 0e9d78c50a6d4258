// Codes of a numeric categorical variable.
//
// Codes preset from a list follow that list; values first met by Encode get the next code, so that
// codes follow the order of first appearance and not the order of the values.
#pragma once

#include <iosfwd>
#include <map>
#include <vector>

#include "naivebayes/encoders/INBEncoder.h"

class NBCatNumEncoder : public INBEncoder {
 public:
  // An empty encoder with room for the expected number of categories.
  explicit NBCatNumEncoder(int expected);
  // Codes by position; a value given twice keeps its first code.
  explicit NBCatNumEncoder(const std::vector<double>& values);

  // The code of a value, which is entered when it is new; -1 when it is missing.
  double Encode(double value);
  // The code of a category, entered when it is new; never missing.
  int Enter(double value);

  // The value of a code; the missing value for a code never given.
  double Decode(long code) const;

  EncoderType GetEncoderType() const override { return kCatNum; }
  int GetNumberOfCategories() const override { return fHighestCode + 1; }
  std::unique_ptr<INBEncoder> Clone() const override;
  int WriteObject(std::fstream& os) const override;
  int ReadObject(std::fstream& is) override;
  void WriteObjectXML(std::ostream& os, int indent) const override;
  void ReadObjectXML(std::ifstream& is) override;
  void Display(std::ostream& os) const override;

 private:
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);

  std::map<double, int> fCodes;
  std::vector<double> fvValues;  // by code
  int fHighestCode = -1;
};
