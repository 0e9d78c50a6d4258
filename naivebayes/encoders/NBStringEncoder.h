// Codes of a string categorical variable, in order of the list given or of first appearance.
// Strings are compared byte by byte.
#pragma once

#include <iosfwd>
#include <map>
#include <string>
#include <vector>

#include "naivebayes/encoders/INBEncoder.h"

class NBStringEncoder : public INBEncoder {
 public:
  // An empty encoder with room for the expected number of categories.
  explicit NBStringEncoder(int expected);
  // Codes by position; a string given twice keeps its first code.
  explicit NBStringEncoder(const std::vector<std::string>& values);
  NBStringEncoder(const NBStringEncoder& other);

  // The code of a string, which is entered when it is new; -1 when it is declared missing.
  double Encode(const std::string& value);
  // The code of a category, entered when it is new; never missing.
  int Enter(const std::string& value);
  // As Encode, but a new string is not entered and gives -1.
  double EncodeConst(const std::string& value) const;

  // The string of a code; null for a code never given.
  const std::string* Decode(long code) const;

  // Rebuilds the code-ordered list, which points into the map.
  void CreateLinks();

  EncoderType GetEncoderType() const override { return kString; }
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

  std::map<std::string, int> fCodes;
  std::vector<const std::string*> fvpValues;  // by code; keys of the map
  int fHighestCode = -1;
};
