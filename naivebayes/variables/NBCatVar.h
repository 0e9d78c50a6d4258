// A categorical variable. Records carry its category codes 0, 1, 2, ... as the caller numbers them;
// the encoder says which value a code stands for.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "naivebayes/variables/INBVariable.h"

class NBCatVar : public INBVariable {
 public:
  // By the number of categories alone. A numeric variable then decodes each code to itself; a
  // string variable knows no strings yet. REQUIRES: level is one of the two categorical levels.
  NBCatVar(const std::string& name, const std::string& label, int categories, MeasureLevel level,
           VariableRole role);
  // By the values, whose positions are the codes.
  NBCatVar(const std::string& name, const std::string& label, const std::vector<double>& values,
           VariableRole role);
  NBCatVar(const std::string& name, const std::string& label,
           const std::vector<std::string>& values, VariableRole role);
  NBCatVar(const NBCatVar& other);

  void SetNumberOfCategories(int categories) { fNCategories = categories; }

  // False for a variable added by its number of categories alone: what its codes stand for is then
  // the caller's secret.
  bool KnowsValues() const { return !fbNumbered && fpEncoder->GetNumberOfCategories() > 0; }

  MeasureLevel GetMeasureLevel() const override { return fLevel; }
  int GetNumberOfCategories() const override { return fNCategories; }
  void UpdateNumberOfCategories() override;
  std::unique_ptr<INBVariable> Clone() const override;
  const INBEncoder* GetEncoder() const override { return fpEncoder.get(); }
  INBEncoder* GetEncoder() override { return fpEncoder.get(); }
  // Constant with one category, empty with none; the number is brought up to date first.
  VarStatus GetVarStatus() override;
  int WriteObject(std::fstream& os) const override;
  int ReadObject(std::fstream& is) override;
  void WriteObjectXML(std::ostream& os, int indent) const override;
  void ReadObjectXML(std::ifstream& is) override;

 private:
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);

  int fNCategories;
  bool fbNumbered = false;  // the encoder has a number of its own for each code
  MeasureLevel fLevel;
  std::unique_ptr<INBEncoder> fpEncoder;
};
