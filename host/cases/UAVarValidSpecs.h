// Which variables of the active data form an engine's record, in which order, and as what.
//
// Variables take record positions 0, 1, 2, ... in the order in which they are added. An input
// adapter reads this when it is built; the specification must not change afterwards.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

class KOVA_Value;
class KOVA_Variable;

class UAVarValidSpecs {
 public:
  // `deliverMissing`: cases with missing values are delivered, the values marked missing (false:
  // such cases are left out). `excludeUserMissing`: user-missing values count as missing (false:
  // as ordinary values). `encodeCategories`: categorical variables are delivered as codes 0, 1, 2,
  // ... (false: numeric ones as their own values).
  UAVarValidSpecs(bool deliverMissing, bool excludeUserMissing, bool encodeCategories);

  // Adds a variable by its index in the active data; returns its record position. A variable that
  // is already there keeps its position.
  int AddVariable(int kovaVar, bool categorical);

  // Adds several; `positions` receives their record positions.
  // REQUIRES: as many flags as variables.
  void AddVariables(const std::vector<int>& kovaVars, const std::vector<bool>& categorical,
                    std::vector<int>& positions);

  // Adds the weight variable of the current session's data as a number; returns its record
  // position, or -1 when the data have none. A weight that is also there as a category gets a
  // position of its own.
  int SetWeightVar();
  // Its record position; -1 while none was added.
  int GetWeightPosition() const { return fWeightPosition; }

  int GetNRecordVars() const;
  bool IsUserMissingExcluded() const;
  bool IsMissingDelivered() const;
  bool AreCategoriesEncoded() const;

  // From record position to index in the data and back; -1 for one that is not there. A variable
  // with two positions answers the first.
  int GetKOVAVarIndex(int recordVar) const;
  int GetRecVarIndex(int kovaVar) const;

  // True when the variable of the active data was added as categorical.
  bool GetKOVACatVar(int kovaVar) const;

  // The same by record position. REQUIRES: 0 <= recordVar < GetNRecordVars().
  bool IsCategorical(int recordVar) const;

  // A value of the variable as display text: a number by the print format (fewer decimals, then a
  // power of ten, where it is too wide; "." when missing), a string as it is.
  static std::string ConvertObsToString(const KOVA_Value& value, const KOVA_Variable& variable);

 private:
  struct RecordVar {
    int fKOVAVar;
    bool fbCategorical;
  };

  int Append(int kovaVar, bool categorical);

  bool fbDeliverMissing;
  bool fbExcludeUserMissing;
  bool fbEncodeCategories;
  int fWeightPosition = -1;
  std::vector<RecordVar> fRecordVars;
  std::unordered_map<int, int> fFirstPosition;  // by index in the data
};
