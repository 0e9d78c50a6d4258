// Reads one variable of the current case, and says whether its value counts.
//
// Follows the case iterator it was made on; owns nothing.
#pragma once

#include "host/cases/KOVA_Value.h"

class KOVA_InputCaseIterator;

// A value as it was read, and whether it is missing under the reader's rule.
class CaseValue {
 public:
  CaseValue() = default;
  CaseValue(KOVA_Value value, bool missing) : fValue(std::move(value)), fbMissing(missing) {}

  const KOVA_Value& Get() const { return fValue; }
  bool IsMissing() const { return fbMissing; }

 private:
  KOVA_Value fValue;
  bool fbMissing = true;
};

class UACaseValueReader {
 public:
  // `includeUserMissing`: user-missing values are valid. The adapter's scan must read the variable.
  UACaseValueReader(KOVA_InputCaseIterator* iterator, int var, bool includeUserMissing);

  // The value of the current case. A null cell is missing under either rule, and so is a
  // user-missing value unless included.
  CaseValue GetValue() const;

  // The same without taking the value.
  bool IsMissing() const;

  // True when the current case's number is system-missing; never for a string variable.
  bool IsSysmis() const;

 private:
  KOVA_InputCaseIterator* fpIterator;
  int fVar;
  bool fbIncludeUserMissing;
};
