// Describes the variables of one NAIVEBAYES run to the engine, from what the first pass over the
// data has shown: categories and ranges, and which predictors cannot be used.
//
// A predictor that is missing or constant in all cases, or that screening leaves out, is dropped:
// it stays in the list, at its record position, as an unused variable.
#pragma once

#include <string>
#include <vector>

#include "backend/predselect/command/PRSMessages.h"
#include "naivebayes/variables/INBVariable.h"
#include "naivebayes/variables/NBVarList.h"

class KOVA_Variable;
class PRSMultiRun;
class PRSMultiScreening;
class PRSValidSpecs;
class ProcedureDataSource;
class UAInputAdapter;

class PRSMultiMetaData {
 public:
  // Both are borrowed.
  PRSMultiMetaData(PRSMultiRun& run, const PRSMultiScreening& screening);

  // Fills the list; `keepValues`: with the values behind the codes, as a model file and a saved
  // state need them. False, after a message, when what is left does not suffice for what the
  // command asks. Call once.
  [[nodiscard]] bool Complete(bool keepValues);

  NBVarList& VarList() { return fVarList; }
  const NBVarList& VarList() const { return fVarList; }

  // Predictors that can be used.
  int GetNUniquePreds() const { return fNUniquePreds; }
  int GetNForcePreds() const { return fNForcePreds; }

  // How many predicted probabilities are saved.
  int GetNSaveDepCats() const { return fNSaveDepCats; }

  // Predictors dropped as missing or as constant in all cases: indices in the data, in the order
  // met, forced ones included.
  const std::vector<int>& GetMissPredictors() const { return fMissPredictors; }
  const std::vector<int>& GetConstPredictors() const { return fConstPredictors; }
  // Whether there are any, or any that the screening left out.
  bool IsAnyDropped() const;

 private:
  using VarIndex = int;

  bool SetPredictors(const std::vector<int>* variables, const std::vector<bool>* categorical,
                     bool forced);
  bool CheckCounts() const;
  bool IsScreenedOut(VarIndex var) const;
  bool CheckForced() const;
  void NoneLeft() const;
  bool FitsIntoMemory() const;
  bool SetNBVariable(VarIndex var, bool categorical, bool input, bool forced);
  bool SetContinuous(const KOVA_Variable& variable, VarIndex var, INBVariable::VariableRole role);
  bool SetCategorical(const KOVA_Variable& variable, VarIndex var, bool input,
                      INBVariable::VariableRole role);
  void AddCategories(const KOVA_Variable& variable, VarIndex var, int nCats,
                     INBVariable::VariableRole role);
  void TargetUnusable(int nCats);
  void SetNBMissingValues(const KOVA_Variable& variable, int index);

  PRSMultiRun& fRun;
  const PRSMultiScreening& fScreening;
  const PRSValidSpecs& fSpecs;
  const ProcedureDataSource& fSource;
  UAInputAdapter& fAdapter;
  bool fbKeepValues = false;
  NBVarList fVarList;
  int fNUniquePreds = 0;
  int fNForcePreds = 0;
  int fNSaveDepCats = 0;
  std::vector<int> fMissPredictors;
  std::vector<int> fConstPredictors;
  PRSMessages fMessages;
};
