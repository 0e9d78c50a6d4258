// What the positions and codes of a saved feature selection component stand for: the command's
// variables, by name, and the values behind their category codes.
//
// The component itself knows predictors by position and categories by code. A state file keeps this
// in front of the component, so that another program can name its variables, and so that counts of
// two files can be brought together although each numbered its categories by first appearance. A
// plain value.
#pragma once

#include <fstream>
#include <iosfwd>
#include <string>
#include <vector>

struct StateVariable {
  std::string fName;
  std::string fLabel;
  bool fbCategorical = false;
  bool fbNumeric = true;
  // Of a categorical variable, by code: its values (numbers or strings).
  std::vector<double> fNumbers;
  std::vector<std::string> fStrings;

  int GetNCategories() const {
    return static_cast<int>(fbNumeric ? fNumbers.size() : fStrings.size());
  }
  // The value of a code as text. REQUIRES: 0 <= code < GetNCategories().
  std::string GetCategoryText(int code) const;
  // Whether a code's value is the smaller one: numbers by value, strings by bytes. REQUIRES: as above.
  bool IsLess(int code, int other) const;
  // The code of each category of `other` here; values that are new here are entered. The result is
  // indexed by the other's code. REQUIRES: both are of one kind.
  std::vector<int> CodesOf(const StateVariable& other);

  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);
};

struct StateDictionary {
  bool fbScreening = true;           // whether the command's screening rules are to be applied
  bool fbExcludeUserMissing = true;  // whether user-missing values counted as missing
  std::string fWeight;               // the name of the weight variable; empty for none
  StateVariable fTarget;
  std::vector<StateVariable> fPredictors;

  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);
};
