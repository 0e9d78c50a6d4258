// One variable of the component's variable list: what it is called, what it does, and the encoder,
// which it owns, that turns its values into category codes.
//
// The numbers of the enumerations are seen by callers and kept in saved state: do not renumber.
#pragma once

#include <iosfwd>
#include <memory>
#include <string>

#include "naivebayes/encoders/INBEncoder.h"

class INBVariable {
 public:
  enum VariableRole {
    kUndefined = 0,
    kInput = 1,          // during selection: forced into every subset
    kPossibleInput = 2,  // a candidate of the selection
    kOutput = 3,         // the target
    kFrequencyWeight = 4,
    kUnused = 5  // also given to dropped predictors
  };
  enum MeasureLevel {
    kUnknownLevel = 0,
    kContinuous = 1,
    kNumericCategorical = 2,
    kStringCategorical = 3,
    kWeightLevel = 4
  };
  enum NBWRoundingOption { kTruncate = 0, kRound = 1, kAsIs = 2 };
  enum VarStatus { kUsable = 0, kConstant = 1, kEmpty = 2 };

  static const char* GetRoleName(VariableRole role);
  static const char* GetLevelName(MeasureLevel level);
  static const char* GetRoundingName(NBWRoundingOption option);

  virtual ~INBVariable() = default;
  INBVariable& operator=(const INBVariable&) = delete;

  virtual MeasureLevel GetMeasureLevel() const = 0;
  virtual const std::string& GetVariableName() const { return fName; }
  virtual const std::string& GetVariableLabel() const { return fLabel; }
  virtual void SetVariableLabel(const std::string& label) { fLabel = label; }

  // Categories that a record may hold; 0 for a weight.
  virtual int GetNumberOfCategories() const = 0;
  virtual VariableRole GetVariableRole() const { return fRole; }
  virtual void SetVariableRole(VariableRole role) { fRole = role; }

  // Raises the number of categories to what the encoder knows.
  virtual void UpdateNumberOfCategories() {}

  // Handed on to the encoder; null for none. Lost when the variable has no encoder.
  virtual void SetUserMissingInfo(std::unique_ptr<INBUserMissing> missing);
  virtual const INBUserMissing* GetUserMissingInfo() const;

  virtual std::unique_ptr<INBVariable> Clone() const = 0;

  // Null only for a continuous variable whose encoder was cleared.
  virtual const INBEncoder* GetEncoder() const = 0;
  virtual INBEncoder* GetEncoder() = 0;

  // Whether the variable can be used: it is neither constant nor empty.
  virtual VarStatus GetVarStatus() = 0;

  // As INBUserMissing says.
  virtual int WriteObject(std::fstream& os) const = 0;
  virtual int ReadObject(std::fstream& is) = 0;
  virtual void WriteObjectXML(std::ostream& os, int indent) const = 0;
  virtual void ReadObjectXML(std::ifstream& is) = 0;

  virtual void Display(std::ostream& os) const;

 protected:
  INBVariable(std::string name, std::string label, VariableRole role);
  INBVariable(const INBVariable&) = default;

  // In saved state.
  template <class Archive, class Self>
  static void NameFields(Archive& archive, Self& self);
  template <class Archive, class Self>
  static void RoleField(Archive& archive, Self& self);

 private:
  std::string fName;
  std::string fLabel;
  VariableRole fRole;
};
