// The variables that a Naive Bayes component works on, in the order of the columns of its caller's
// records. A variable's position here is its index everywhere in the component.
//
// The list owns its variables; copying it copies them. A dropped predictor stays in the list, with
// its index, as an unused variable.
#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "naivebayes/variables/INBVariable.h"

class NBVarList {
 public:
  NBVarList() = default;
  NBVarList(const NBVarList& other);
  NBVarList& operator=(const NBVarList&) = delete;
  NBVarList(NBVarList&&) = default;

  // Each gives the index of the new variable, or -1, changing nothing, when the name is empty or
  // already in the list. Categories given as values have their positions as codes; -1 also for a
  // value given twice, NaN and the missing value.
  int AddCatVar(const std::string& name, const std::string& label, int nCats,
                INBVariable::MeasureLevel level, INBVariable::VariableRole role);
  int AddCatVar(const std::string& name, const std::string& label,
                const std::vector<double>& values, INBVariable::VariableRole role);
  int AddCatVar(const std::string& name, const std::string& label,
                const std::vector<double>& values, const std::vector<std::string>& labels,
                INBVariable::VariableRole role);
  int AddCatVar(const std::string& name, const std::string& label,
                const std::vector<std::string>& values, INBVariable::VariableRole role);
  int AddCatVar(const std::string& name, const std::string& label,
                const std::vector<std::string>& values, const std::vector<std::string>& labels,
                INBVariable::VariableRole role);
  // Also -1 for the role of the target, which must be categorical, and for cutpoints that do not
  // ascend.
  int AddContVar(const std::string& name, const std::string& label, double min, double max,
                 int bins, INBVariable::VariableRole role);
  int AddContVar(const std::string& name, const std::string& label,
                 const std::vector<double>& cutpoints, INBVariable::VariableRole role);
  int AddWeightVar(const std::string& name, const std::string& label,
                   INBVariable::NBWRoundingOption rounding);

  // Add to the user-missing definition of a variable, which is made on first use. Only values that
  // an encoder meets can be missing: NBFactory refuses (70023) a list with a definition of another
  // kind than its variable, or for a categorical variable that was added by its number of
  // categories alone. REQUIRES: the variable has an encoder.
  void AddDiscreteUserMissing(int var, double value, const std::string& label);
  void AddDiscreteUserMissing(int var, const std::string& value, const std::string& label);
  void SetMissingInterval(int var, double low, double high);

  int Size() const { return static_cast<int>(fvpVars.size()); }
  // REQUIRES, here and below: 0 <= var < Size().
  const INBVariable* GetVarAt(int var) const { return fvpVars[var].get(); }
  INBVariable* GetVarAt(int var) { return fvpVars[var].get(); }
  const INBEncoder* GetEncoderAt(int var) const { return GetVarAt(var)->GetEncoder(); }
  INBEncoder* GetEncoderAt(int var) { return GetVarAt(var)->GetEncoder(); }
  // The index of a variable by its name, or -1.
  int FindVariable(const std::string& name) const;

  // The last variable that is given the role of the target, or of the weight, has it; NBFactory
  // refuses (70024) a list with two.
  INBVariable::VariableRole GetVariableRole(int var) const;
  void SetVariableRole(int var, INBVariable::VariableRole role);
  // -1 when there is none.
  int GetTargetIndex() const { return fTarget; }
  int GetWeightIndex() const { return fWeight; }

  int GetNumInputVars() const { return CountRole(INBVariable::kInput); }
  int GetNumPossibleInputVars() const { return CountRole(INBVariable::kPossibleInput); }
  int GetNumCatVar() const { return fNCatVars; }
  int GetNumContVar() const { return fNContVars; }
  // The categories of all inputs together.
  int GetNInputCats() const;
  // The categories of the target; 0 without one.
  int GetNOutputCats() const;
  // Names of the inputs in list order, and of the target (empty without one).
  void GetVarNames(std::vector<std::string>& inputs, std::string& target) const;

  // Later variables move up by one. Nothing happens for an unknown index or name.
  void RemoveVar(int var);
  void RemoveVar(const std::string& name);

  void UpdateNumbersOfCategories();
  // Gives the continuous variables encoders of so many equal bins: all of them, or only those
  // without one.
  void SetupContEncoders(int bins, bool replaceExisting);
  // Takes them away, and user-missing values with them. NBFactory refuses (70025) a list in which
  // an input has none.
  void RemoveContEncoders(bool forgetRanges);

  // Whether both lists describe the same variables with the same roles and the same bins, so that
  // counts made with one can be added to counts made with the other; otherwise `var` is the first
  // variable that differs (-1 when the sizes do).
  bool CanMergeWith(const NBVarList& other, int& var) const;

  // True when no variable in use is constant or empty; otherwise their indices are handed back.
  // Unused variables do not count, and candidates only on demand.
  bool IsValidList(std::vector<int>& constantVars, std::vector<int>& emptyVars,
                   bool withPossibleInputs) const;

  // As INBUserMissing says.
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);

  void Display(std::ostream& os) const;

 private:
  // Whether a variable gives the records their weight.
  static bool IsWeight(const INBVariable& variable);
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
  int Add(std::unique_ptr<INBVariable> variable);
  bool IsNameFree(const std::string& name) const;
  int CountRole(INBVariable::VariableRole role) const;
  // Counts, names and special variables, found anew.
  void Reindex();

  std::vector<std::unique_ptr<INBVariable>> fvpVars;
  std::unordered_map<std::string, int> fIndexOfName;
  int fNContVars = 0;
  int fNCatVars = 0;
  int fTarget = -1;
  int fWeight = -1;
};
